#include "programs/table_file.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

#include "master/gzip.h"

namespace wavo::programs {

namespace {

std::filesystem::path PathOf(const std::string& path) {
    return std::u8string(path.begin(), path.end());
}

}  // namespace

measure::Told<std::string> ReadWholeFile(const std::string& path) {
    using Result = measure::Told<std::string>;
    std::error_code failure;
    if (!std::filesystem::is_regular_file(PathOf(path), failure)) {
        return Result::Not(path + ": no such file");
    }
    std::ifstream stream(PathOf(path), std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream || !text) {
        return Result::Not(path + ": cannot be read");
    }
    return std::move(text).str();
}

bool WriteWholeFile(const std::string& path, const std::string& text) {
    std::ofstream stream(PathOf(path), std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    return !stream.fail();
}

measure::Told<measure::ColumnTable> ReadTable(const std::string& path) {
    using Result = measure::Told<measure::ColumnTable>;
    auto content = ReadWholeFile(path);
    if (!content) {
        return Result::Not(content.reason);
    }
    std::string text = std::move(*content.value);
    if (master::IsGzip(text)) {
        std::string unpacked;
        if (!master::Gunzip(text, &unpacked)) {
            return Result::Not(path + ": the gzip data is damaged or cut off");
        }
        text = std::move(unpacked);
    }
    auto table = measure::ParseColumns(text);
    return table ? std::move(table) : Result::Not(path + ": " + table.reason);
}

}  // namespace wavo::programs
