#include "test_tables.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "master/gzip.h"

namespace wavo::measure {

namespace {

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace

std::string LoadText(const std::string& name) {
    return ReadWhole(WAVO_MEASURE_DATA "/" + name);
}

ColumnTable LoadTable(const std::string& name) {
    constexpr std::string_view kRecordings = "recordings/";
    const bool recording = name.starts_with(kRecordings);
    const std::string file = (recording ? name.substr(kRecordings.size()) : name) + ".csv.gz";
    const std::string packed =
        ReadWhole((recording ? WAVO_RECORDINGS "/" : WAVO_MEASURE_DATA "/") + file);
    std::string text;
    EXPECT_TRUE(master::Gunzip(packed, &text)) << file;
    auto table = ParseColumns(text);
    EXPECT_TRUE(table) << file << ": " << table.reason;
    return table ? std::move(*table.value) : ColumnTable();
}

}  // namespace wavo::measure
