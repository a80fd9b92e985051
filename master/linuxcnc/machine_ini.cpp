#include "master/linuxcnc/machine_ini.h"

#include "support/number_text.h"

namespace wavo::master {

namespace {

constexpr int kDeepestInclude = 16;
constexpr std::string_view kIncludeWord = "#INCLUDE";

std::string_view WithoutBlanks(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the next line off a text, with those that it is joined with.
std::string TakeLine(std::string_view* text) {
    std::string line;
    while (!text->empty()) {
        const auto end = text->find('\n');
        std::string_view part = text->substr(0, end);
        text->remove_prefix(end == std::string_view::npos ? text->size() : end + 1);
        if (!part.empty() && part.back() == '\r') {
            part.remove_suffix(1);
        }
        if (part.empty() || part.back() != '\\') {
            return line.append(part);
        }
        line.append(part.substr(0, part.size() - 1));
    }
    return line;
}

}  // namespace

std::string FolderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? "" : path.substr(0, slash + 1);
}

std::optional<MachineIni> MachineIni::Read(const std::string& path, const ReadFile& read_file,
                                           std::string* error) {
    MachineIni ini;
    if (!ini.Add(path, read_file, 0, error)) {
        return std::nullopt;
    }
    return ini;
}

bool MachineIni::Add(const std::string& path, const ReadFile& read_file, int depth,
                     std::string* error) {
    const std::optional<std::string> text = read_file(path);
    if (!text) {
        *error = "cannot read the INI file " + path;
        return false;
    }
    if (depth > kDeepestInclude) {
        *error = "the INI file " + path + " includes itself";
        return false;
    }
    for (std::string_view rest = *text; !rest.empty();) {
        const std::string line = TakeLine(&rest);
        const std::string_view content = WithoutBlanks(line);
        if (content.starts_with(kIncludeWord)) {
            const std::string name(WithoutBlanks(content.substr(kIncludeWord.size())));
            const std::string place = name.starts_with("/") ? name : FolderOf(path) + name;
            if (!Add(place, read_file, depth + 1, error)) {
                return false;
            }
        } else {
            AddLine(content);
        }
    }
    return true;
}

void MachineIni::AddLine(std::string_view line) {
    if (line.empty() || line.front() == '#' || line.front() == ';') {
        return;
    }
    if (line.front() == '[') {
        m_section = line.substr(1, line.find(']') - 1);
        return;
    }
    const auto equals = line.find('=');
    if (equals != std::string_view::npos) {
        m_sections[m_section].push_back({std::string(WithoutBlanks(line.substr(0, equals))),
                                         std::string(WithoutBlanks(line.substr(equals + 1)))});
    }
}

std::vector<std::string> MachineIni::FindAll(const std::string& section,
                                             const std::string& key) const {
    std::vector<std::string> values;
    if (const auto found = m_sections.find(section); found != m_sections.end()) {
        for (const Entry& entry : found->second) {
            if (entry.key == key) {
                values.push_back(entry.value);
            }
        }
    }
    return values;
}

std::optional<std::string> MachineIni::Find(const std::string& section,
                                            const std::string& key) const {
    std::vector<std::string> values = FindAll(section, key);
    return values.empty() ? std::nullopt : std::optional(std::move(values.front()));
}

std::optional<double> MachineIni::Number(const std::string& section, const std::string& key) const {
    const std::optional<std::string> value = Find(section, key);
    return value ? FindDouble(*value) : std::nullopt;
}

}  // namespace wavo::master
