// The application: its start and its end.
#pragma once

#include <QApplication>
#include <QSettings>
#include <memory>
#include <string>

#include "ui/prompts.h"
#include "ui/shell/command_line.h"

namespace wavo {

class CMainFrame;
class FirstStart;

class CWavoApp : public QApplication {
    Q_OBJECT

 public:
    /// `prompts`: all that the program asks the user.
    CWavoApp(int& argc, char** argv, Prompts prompts);
    ~CWavoApp() override;

    /// Says on the standard streams what the program has to say in place of its work, without such
    /// a stream on the console of its starter. False when there is neither; a box then says it.
    static bool Print(const LastWords& words);
    static void ShowInBox(const LastWords& words, const Prompts& prompts);

    /// The path of the graph file `name` of the command line, as it stands or in the folder "DATA";
    /// absolute. Shows a box over `parent` and returns an empty text when there is none.
    static std::string FindGraphFile(const QString& name, const Prompts& prompts, QWidget* parent);

    /// Makes the frame and shows it.
    void InitInstance(const AppOptions& options);

 private:
    void StartLogs();
    void WatchTermination();
    /// Opens the files of the command line.
    void OpenFiles(const AppOptions& options);
    void TakeScreenshot(const QString& file);
    void End(int exit_code);

    Prompts m_prompts;
    bool m_has_failed = false;  ///< while nobody was there to be told in a box
    std::string m_graph_file;   ///< of the command line, once it is known to exist
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<CMainFrame> m_frame;  // before the settings go
    std::unique_ptr<FirstStart> m_first;  // not where nobody looks
};

}  // namespace wavo
