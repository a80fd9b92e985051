#include "platform/file.h"

namespace wavo::platform {

namespace {

FileOperations* g_files = nullptr;

}  // namespace

FileOperations& Files() {
    return g_files != nullptr ? *g_files : SystemFiles();
}

FileOperationsOverride::FileOperationsOverride(FileOperations& operations) noexcept
    : m_previous(g_files) {
    g_files = &operations;
}

FileOperationsOverride::~FileOperationsOverride() {
    g_files = m_previous;
}

}  // namespace wavo::platform
