#include "platform/data_file.h"

namespace wavo::platform {

namespace {

DataFileOperations* g_data_files = nullptr;

}  // namespace

DataFileOperations& DataFiles() {
    return g_data_files != nullptr ? *g_data_files : SystemDataFiles();
}

DataFileOperationsOverride::DataFileOperationsOverride(DataFileOperations& operations) noexcept
    : m_previous(g_data_files) {
    g_data_files = &operations;
}

DataFileOperationsOverride::~DataFileOperationsOverride() {
    g_data_files = m_previous;
}

}  // namespace wavo::platform
