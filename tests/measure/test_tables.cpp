#include "test_tables.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <utility>

#include "tables/table_bytes.h"

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
    auto bytes =
        tables::TableBytes::Open((recording ? WAVO_RECORDINGS "/" : WAVO_MEASURE_DATA "/") + file);
    if (!bytes) {
        ADD_FAILURE() << bytes.Why().text;
        return {};
    }
    auto table = tables::ReadColumns(std::move(*bytes));
    EXPECT_TRUE(table) << file << ": " << table.Why().text;
    return table ? std::move(*table) : ColumnTable();
}

}  // namespace wavo::measure
