#include "sources.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace wavo::testing {

namespace {

namespace fs = std::filesystem;

std::string TextOf(const fs::path& path) {
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::map<std::string, std::string> ReadSources() {
    std::map<std::string, std::string> sources;
    const fs::path root(WAVO_SOURCE_DIR);
    for (const auto& [folder, base] :
         {std::pair{root / "src", root / "src"}, std::pair{root / "master", root},
          std::pair{root / "programs", root}}) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            const std::string extension = entry.path().extension().string();
            if (extension == ".h" || extension == ".cpp") {
                sources[fs::relative(entry.path(), base).generic_string()] = TextOf(entry.path());
            }
        }
    }
    return sources;
}

}  // namespace

const std::map<std::string, std::string>& Sources() {
    static const std::map<std::string, std::string> sources = ReadSources();
    return sources;
}

}  // namespace wavo::testing
