// A store in a file of one test.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "expect_errors.h"
#include "support/mini_data.h"
#include "temporary_folder.h"

namespace wavo::testing {

class MiniDataFiles : public ::testing::Test {
 protected:
    MiniDataFiles() : m_path(m_folder.File("store.ini")) {}

    void Make(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }
    std::string Content() const { return m_folder.Read("store.ini"); }
    std::size_t FileCount() const {
        const std::filesystem::directory_iterator files(m_folder.path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    TemporaryFolder m_folder;
    const std::string m_path;
    const CollectReports m_traces{diagnostics::Service::kErrorTrace};
};

}  // namespace wavo::testing
