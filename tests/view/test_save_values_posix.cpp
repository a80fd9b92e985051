// Exported values in a file that may not be replaced, on POSIX systems.
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "session/save_values.h"
#include "temporary_folder.h"
#include "unprivileged.h"

namespace wavo {
namespace {

TEST(DataFilePosix, ThatMayNotBeReplacedStaysWhatItWas) {
    const testing::TemporaryFolder folder;
    ExportSettings settings;
    settings.end_of_line = "\n";
    settings.data_file = folder.File("values.txt");
    SaveValues values;
    values.SetSettings(settings);
    values.FindOrAddColumn("X") = {1.0};
    EXPECT_TRUE(values.CreateDataFile({}));
    std::filesystem::permissions(settings.data_file, std::filesystem::perms::owner_read);
    values.FindOrAddColumn("X") = {2.0};
    const std::optional<std::string> result = testing::RunUnprivileged([&] {
        const bool failed = !values.CreateDataFile({});
        return std::string(failed ? "failed" : "written");
    });
    if (!result.has_value()) {
        GTEST_SKIP() << "the rights of the superuser cannot be given up here";
    }
    EXPECT_EQ(*result, "failed");
    EXPECT_EQ(folder.Read("values.txt"), "X\n1.000000\n");
}

}  // namespace
}  // namespace wavo
