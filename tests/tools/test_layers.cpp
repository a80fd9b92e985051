// The layers: which folder may include what. The table is the architecture; this test holds it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "source_outline.h"
#include "sources.h"

namespace wavo {
namespace {

namespace fs = std::filesystem;
using testing::ClassOutline;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::OutlineOf;
using testing::Sources;

struct Layer {
    std::vector<std::string> may_include;  // folders of ours, or single headers
    bool qt = false;
};

const std::map<std::string, Layer>& Layers() {
    static const std::map<std::string, Layer> layers = {
        {"platform", {{}}},
        {"support", {{"platform"}}},
        {"settings", {{"support", "platform"}}},
        {"source", {{"support"}}},
        {"link", {{"source", "support", "platform"}}},
        {"recording", {{"source", "support", "platform"}}},
        {"tables", {{"recording", "source", "settings", "support", "platform"}}},
        {"graph/model", {{"link/axis_capabilities.h", "support"}}},
        {"graph/values", {{"source", "support"}}},
        {"graph/record", {{"graph/model", "graph/values", "source", "support"}}},
        {"graph/draw/raster",
         {{"graph/values/min_max_pyramid.h", "support/processor.h", "support/to_count.h"}, true}},
        {"graph/draw/curve",
         {{"graph/draw/raster", "source", "graph/model", "graph/values", "support"}, true}},
        {"graph/draw/frame",
         {{"graph/draw/raster", "graph/record", "graph/model", "graph/values", "support"}, true}},
        {"graph/draw",
         {{"graph/draw/raster", "graph/draw/curve", "graph/draw/frame", "graph/record", "source",
           "graph/model", "graph/values", "settings", "support"},
          true}},
        {"computed",
         {{"source", "link/axis_capabilities.h", "graph/values/missing_value.h", "support"}}},
        {"session",
         {{"computed", "measure", "source", "link", "recording", "graph/model", "graph/values",
           "settings", "support", "platform"}}},
        {"measure", {{"support"}}},
        {"report", {{"measure", "support"}, true}},
        {"ui", {{"support"}, true}},
        {"ui/controls", {{}, true}},
        {"ui/dialogs",
         {{"ui", "ui/controls", "computed", "graph/model", "graph/draw/display_settings.h",
           "settings", "tables", "support", "platform/system_dialogs.h"},
          true}},
        {"ui/graph_editor",
         {{"ui", "ui/controls", "graph/model", "graph/draw/frame/colors.h",
           "graph/draw/display_settings.h", "link/axis_capabilities.h", "support"},
          true}},
        {"ui/bars", {{"ui/controls", "ui/dialogs/table_dialog.h", "view/command_ids.h"}, true}},
        {"view",
         {{"session", "computed", "measure", "source", "recording", "ui", "ui/dialogs",
           "ui/graph_editor", "graph/model", "graph/values", "graph/draw", "link", "settings",
           "support", "platform"},
          true}},
        {"ui/recording",
         {{"view/message_pump.h", "view/command_target.h", "view/command_ids.h", "recorder/notice",
           "ui", "ui/controls", "support", "platform"},
          true}},
        {"ui/panes",
         {{"view", "report", "measure", "ui", "ui/controls", "ui/dialogs/table_dialog.h",
           "ui/dialogs/report_texts.h", "support"},
          true}},
        {"ui/shell",
         {{"ui/recording", "ui/panes", "view", "session", "ui", "ui/bars", "ui/controls",
           "ui/dialogs", "tables", "recording", "source", "graph/model", "graph/values",
           "graph/draw", "link", "settings", "support", "platform"},
          true}},
        {"recorder/notice", {{"platform"}}},
        {"recorder",
         {{"recorder/notice", "recording", "source", "graph/model", "graph/values", "link",
           "support", "platform"}}},
        {"master",
         {{"link/axis_capabilities.h", "link/wire_format.h", "link/master_messages.h", "recording",
           "tables", "support", "platform"}}},
        {"master/linuxcnc",
         {{"master", "link/axis_capabilities.h", "link/master_messages.h", "support", "platform"}}},
        {"master/pipe",
         {{"master", "link/axis_capabilities.h", "link/master_messages.h", "support", "platform"}}},
        {"programs",
         {{"recorder", "report", "measure", "recording", "tables", "support", "platform"}, true}},
    };
    return layers;
}

/// The layer that a path (relative to src, or beginning with "master/" or "programs/") lies in, the
/// innermost; empty for none.
std::string LayerOf(const std::string& path) {
    std::string innermost;
    for (const auto& [name, layer] : Layers()) {
        if (path.starts_with(name + "/") && name.size() > innermost.size()) {
            innermost = name;
        }
    }
    return innermost;
}

bool IsOperatingSystemHeader(const std::string& header) {
    static const std::regex pattern(
        "(sys/.*|linux/.*|netinet/.*|arpa/.*|unistd|fcntl|signal|csignal|pthread|dlfcn|poll|pwd|"
        "execinfo|termios|sched|errno|windows|winsock2?|shlobj|dbghelp|io|direct|process)\\.h|"
        "qt_windows\\.h|csignal");
    return std::regex_match(header, pattern);
}

/// Violations in one source text, in words.
std::vector<std::string> Check(const std::string& path, const std::string& text) {
    static const std::regex include_line("^\\s*#\\s*include\\s+([<\"])([^>\"]+)[>\"].*");
    static const std::regex condition_line(
        "^\\s*#\\s*(if|ifdef|ifndef|elif)\\b.*\\b(_WIN32|WIN32|_WIN64|__linux__|__unix__|__APPLE__|"
        "_MSC_VER|__MINGW32__|__MINGW64__|Q_OS_\\w+).*");
    std::vector<std::string> violations;
    const std::string layer = LayerOf(path);
    if (layer.empty()) {
        return {path + ": lies in no layer"};
    }
    const Layer& rules = Layers().at(layer);
    std::istringstream lines(text);
    std::string first_include;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (layer != "platform" && std::regex_match(line, match, condition_line)) {
            violations.push_back(path + ": depends on the operating system: " + line);
        }
        if (!std::regex_match(line, match, include_line)) {
            continue;
        }
        const std::string header = match[2];
        if (first_include.empty()) {
            first_include = header;
        }
        if (match[1] == "<") {
            if (!rules.qt && header.starts_with("Q")) {
                violations.push_back(path + ": no Qt here: " + header);
            }
            if (layer != "platform" && IsOperatingSystemHeader(header)) {
                violations.push_back(path + ": header of an operating system: " + header);
            }
            continue;
        }
        const std::string target = LayerOf(header);
        const bool allowed =
            target == layer ||
            std::any_of(rules.may_include.begin(), rules.may_include.end(),
                        [&](const std::string& may) { return may == target || may == header; });
        // Headers beside the file (no folder) are its own.
        if (!allowed && header.find('/') != std::string::npos) {
            violations.push_back(path + ": may not include " + header);
        }
    }
    if (path.ends_with(".cpp") && !path.ends_with("/main.cpp")) {
        const std::string own = fs::path(path).stem().string() + ".h";
        if (fs::path(first_include).filename() != own &&
            fs::exists(fs::path(WAVO_SOURCE_DIR) / "src" / fs::path(path).parent_path() / own)) {
            violations.push_back(path + ": does not include its own header first");
        }
    }
    return violations;
}

TEST(Layers, EverySourceKeepsToTheTable) {
    std::vector<std::string> violations;
    const std::map<std::string, std::string> sources = Sources();
    for (const auto& [path, text] : sources) {
        const std::vector<std::string> found = Check(path, text);
        violations.insert(violations.end(), found.begin(), found.end());
    }
    EXPECT_GT(sources.size(), 60U);
    EXPECT_THAT(violations, IsEmpty());
}

TEST(Layers, APlantedBadIncludeIsFound) {
    EXPECT_THAT(Check("link/line_fifo.h", "#include \"view/wavo_view.h\"\n"),
                ElementsAre("link/line_fifo.h: may not include view/wavo_view.h"));
    EXPECT_THAT(Check("graph/model/wavo_graph.h", "#include \"link/line_fifo.h\"\n"),
                ElementsAre("graph/model/wavo_graph.h: may not include link/line_fifo.h"));
    EXPECT_THAT(Check("graph/values/graph_value.h", "#include <QString>\n"),
                ElementsAre("graph/values/graph_value.h: no Qt here: QString"));
    EXPECT_THAT(Check("view/wavo_view.h", "#include <unistd.h>\n"),
                ElementsAre("view/wavo_view.h: header of an operating system: unistd.h"));
    EXPECT_THAT(Check("view/wavo_view.h", "#ifdef Q_OS_WIN\n"),
                ElementsAre("view/wavo_view.h: depends on the operating system: #ifdef Q_OS_WIN"));
    EXPECT_THAT(Check("link/line_fifo.cpp", "#include <atomic>\n#include \"link/line_fifo.h\"\n"),
                ElementsAre("link/line_fifo.cpp: does not include its own header first"));
    EXPECT_THAT(Check("master/publisher.h", "#include \"master/pipe/pipe_run.h\"\n"),
                ElementsAre("master/publisher.h: may not include master/pipe/pipe_run.h"));
    EXPECT_THAT(Check("view/wavo_view.cpp", "#include \"view/wavo_view.h\"\n#include <QPainter>\n"),
                IsEmpty());
}

TEST(Layers, TheTableHasNoCycle) {
    std::map<std::string, int> state;  // 1 = on the path, 2 = done
    std::function<bool(const std::string&)> has_cycle = [&](const std::string& name) {
        if (state[name] != 0) {
            return state[name] == 1;
        }
        state[name] = 1;
        for (const std::string& next : Layers().at(name).may_include) {
            const std::string target = Layers().contains(next) ? next : LayerOf(next);
            if (target != name && has_cycle(target)) {
                return true;
            }
        }
        state[name] = 2;
        return false;
    };
    for (const auto& [name, layer] : Layers()) {
        EXPECT_FALSE(has_cycle(name)) << name;
    }
}

/// What a text includes, with its brackets or quotes.
std::vector<std::string> IncludesOf(const std::string& text) {
    static const std::regex include_line(R"(^\s*#\s*include\s+([<"][^>"]+[>"]).*)");
    std::vector<std::string> includes;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (std::smatch match; std::regex_match(line, match, include_line)) {
            includes.push_back(match[1]);
        }
    }
    return includes;
}

/// The layers that a layer includes, and what these include.
std::set<std::string> Below(const std::string& name) {
    std::set<std::string> below;
    for (const std::string& may : Layers().at(name).may_include) {
        const std::string target = Layers().contains(may) ? may : LayerOf(may);
        below.insert(target);
        below.merge(Below(target));
    }
    return below;
}

TEST(Layers, NothingBelowTheViewKnowsQtButDrawingAndUi) {
    const std::set<std::string> below = Below("view");
    EXPECT_GT(below.size(), 8U);
    std::set<std::string> with_qt;
    for (const auto& [path, text] : Sources()) {
        for (const std::string& header : IncludesOf(text)) {
            if (below.contains(LayerOf(path)) &&
                (header.starts_with("<Q") || header.starts_with("<q") ||
                 header == "\"qt_windows.h\"")) {
                with_qt.insert(LayerOf(path));
            }
        }
    }
    EXPECT_THAT(with_qt, ElementsAre("graph/draw", "graph/draw/curve", "graph/draw/frame",
                                     "graph/draw/raster", "ui", "ui/controls", "ui/dialogs",
                                     "ui/graph_editor"));
    for (const auto& [name, layer] : Layers()) {
        for (const std::string& may : layer.may_include) {
            const std::string target = Layers().contains(may) ? may : LayerOf(may);
            EXPECT_TRUE(layer.qt || !Layers().at(target).qt) << name << " gets Qt through " << may;
        }
    }
}

/// Files that include each other, as "a.h -> b.h -> a.h"; empty when there are none.
std::string FindCycle(const std::map<std::string, std::string>& sources) {
    std::map<std::string, int> state;  // 1 = on the path, 2 = done
    std::vector<std::string> path;
    std::function<std::string(const std::string&)> visit = [&](const std::string& file) {
        path.push_back(file);
        if (state[file] == 1) {
            std::string cycle = file;
            for (auto step = path.rbegin() + 1; *step != file; ++step) {
                cycle.insert(0, *step + " -> ");
            }
            return file + " -> " + cycle;
        }
        std::string cycle;
        if (state[file] == 0) {
            state[file] = 1;
            for (const std::string& header : IncludesOf(sources.at(file))) {
                const std::string name = header.substr(1, header.size() - 2);
                if (cycle.empty() && sources.contains(name)) {
                    cycle = visit(name);
                }
            }
            state[file] = 2;
        }
        path.pop_back();
        return cycle;
    };
    for (const auto& [file, text] : sources) {
        if (std::string cycle = visit(file); !cycle.empty()) {
            return cycle;
        }
    }
    return {};
}

TEST(Layers, NoFilesIncludeEachOther) {
    EXPECT_EQ(FindCycle(Sources()), "");
    EXPECT_EQ(FindCycle({{"a.h", "#include \"b.h\"\n"},
                         {"b.h", "#include <map>\n#include \"c.h\"\n"},
                         {"c.h", "#include \"b.h\"\n"}}),
              "b.h -> c.h -> b.h");
}

TEST(Layers, TheViewIsAWidgetAndLittleElse) {
    const std::vector<ClassOutline> classes = OutlineOf(Sources().at("view/wavo_view.h")).classes;
    ASSERT_EQ(classes.size(), 1U);
    const ClassOutline& view = classes.front();
    EXPECT_EQ(view.name, "CWavoView");
    ASSERT_FALSE(view.bases.empty());
    EXPECT_EQ(view.bases.front(), "QWidget");
    EXPECT_LE(view.bases.size(), 2U);
    EXPECT_GE(view.functions.size(), 10U) << "the header is not read as it should";
    EXPECT_LE(view.functions.size(), 25U) << ::testing::PrintToString(view.functions);
}

TEST(Layers, AGraphOrdersItsPiecesAndDoesLittleElse) {
    const std::vector<ClassOutline> classes =
        OutlineOf(Sources().at("graph/draw/graph_draw.h")).classes;
    const auto graph = std::ranges::find(classes, "GraphDraw", &ClassOutline::name);
    ASSERT_NE(graph, classes.end());
    EXPECT_TRUE(graph->bases.empty());
    EXPECT_GE(graph->functions.size(), 30U) << "the header is not read as it should";
    EXPECT_LE(graph->functions.size(), 46U) << ::testing::PrintToString(graph->functions);
}

}  // namespace
}  // namespace wavo
