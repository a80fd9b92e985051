// A target for the writing of whole files.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "support/fast_file.h"
#include "temporary_folder.h"

namespace wavo::testing {

class FastFileWrite : public ::testing::Test {
 protected:
    FastFileWrite() : m_path(m_folder.File("target.ini")) {}

    std::size_t Write(const std::string& data, int mode) const {
        return MFastFile_WriteAtOnce(m_path, data.data(), data.size(), mode);
    }
    void Make(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    std::string Content() const { return m_folder.Read("target.ini"); }
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    TemporaryFolder m_folder;
    const std::string m_path;
    const CollectReports m_traces{diagnostics::Service::kErrorTrace};
};

}  // namespace wavo::testing
