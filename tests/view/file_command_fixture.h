// The commands for graph files with their files, without dialogs and view.
#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cycle_fixture.h"
#include "graph/model/graph_ini_data.h"
#include "settings/view_settings_file.h"
#include "ui/prompts.h"
#include "view/file_commands.h"

namespace wavo::testing {

/// Error-log entries.
inline std::string FailedToSaveGraphs(const std::string& path) {
    return "FileCommands::Write(): failed to save '" + path + "'";
}
inline std::string FailedToSaveSettings(const std::string& path) {
    return "CWavoView::WriteProperties: failed to svae '" + path + "'";
}

class FileCommandTest : public CycleFixture {
 protected:
    FileCommandTest() {
        m_host.full_titles = true;
        m_host.on_title = [this] { m_background_at_title = m_settings.background; };
        m_host.on_graphs = [this] {
            return m_graphs.IsEmpty() ? "show no graphs" : "show settings";
        };
        m_host.on_message = [this](const std::string& text) { NoteMessage(text); };
        m_settings = DefaultViewSettings();
        m_prompts.box = [this](QWidget*, const Box& box) {
            m_host.happened.push_back("box " + box.text);
            m_boxes.push_back(box);
            return m_answer;
        };
        const auto choose = [this](QWidget*, const FileQuestion& question) {
            m_questions.push_back(question);
            return m_choice;
        };
        m_prompts.open_file = choose;
        m_prompts.save_file = choose;
    }

    /// Keeps the files that the status bar tells of.
    void NoteMessage(const std::string& text) {
        const std::string unwritten = "Cannot write ";
        const std::string left_out =
            "Axes with names that cannot stand in a file were left out of ";
        const std::size_t end = text.find(", see the error log");
        for (const auto& [begin, files] :
             {std::pair{unwritten, &m_unwritten}, std::pair{left_out, &m_left_out}}) {
            if (text.starts_with(begin)) {
                files->push_back(text.substr(begin.size(), end - begin.size()));
            }
        }
    }

    std::vector<std::string> m_unwritten;
    std::vector<std::string> m_left_out;

    std::string Path(const char* name) { return m_folder.filePath(name).toStdString(); }
    void Choose(const std::string& path) { m_choice = QString::fromStdString(path); }

    std::string FileText(const std::string& path) {
        QFile file(QString::fromStdString(path));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
        return file.readAll().toStdString();
    }

    /// A file with a graph of an axis, and settings with a background.
    std::string MakeFile(const char* name, const char* axis, ColorRef background) {
        WavoGraph graph;
        graph.InitGraph(1, axis, 0, nullptr);
        MIniData store;
        EXPECT_TRUE(store.Open(Path(name)));
        EXPECT_TRUE(GetGraphAsIniData(store, {graph}, "text"));
        EXPECT_TRUE(store.Save());
        ViewSettings settings = DefaultViewSettings();
        settings.background = background;
        EXPECT_TRUE(WriteProperties(Path(name), settings));
        return Path(name);
    }
    /// The same; the graph has a minimum above its maximum.
    std::string MakeUnreadableFile(const char* name) {
        const std::string path = MakeFile(name, "X1", 0x111111);
        MIniData store;
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(store.SetStringEntry("1", "YScaleAxMin", "20"));
        EXPECT_TRUE(store.Save());
        return path;
    }
    std::vector<WavoGraph> GraphsIn(const std::string& path) {
        MIniData store;
        std::vector<WavoGraph> graphs;
        std::string error;
        EXPECT_TRUE(store.Open(path));
        EXPECT_TRUE(CreateGraphsFromIniData(store, graphs, error, m_text_read, 0.0)) << error;
        return graphs;
    }
    ColorRef BackgroundIn(const std::string& path) {
        ViewSettings settings;
        ReadProperties(path, settings);
        return settings.background;
    }

    QTemporaryDir m_folder;
    ViewSettings& m_settings = m_session.Settings().Current();
    GraphFiles& m_files = m_session.Files();
    Prompts m_prompts;
    FileCommands m_commands{m_session, m_prompts, nullptr};
    std::optional<QString> m_choice;
    BoxAnswer m_answer = BoxAnswer::kOk;
    std::vector<Box> m_boxes;
    std::vector<FileQuestion> m_questions;
    ColorRef m_background_at_title = 0;
    std::string m_text_read;
};

}  // namespace wavo::testing
