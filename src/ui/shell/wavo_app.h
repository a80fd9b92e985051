// The application: its options, its start and its end.
#pragma once

#include <QApplication>
#include <QSettings>
#include <memory>
#include <string>

namespace wavo {

class CMainFrame;

/// What the command line asks for.
struct AppOptions {
    QString screenshot;       ///< file for a picture of the window; empty for none
    quint64 after_lines = 0;  ///< lines to receive before the picture is taken
    QString graph_file;       ///< as named on the command line; empty for none
};

class CWavoApp : public QApplication {
    Q_OBJECT

 public:
    CWavoApp(int& argc, char** argv);
    ~CWavoApp() override;

    /// Reads the command line; ends the process for --help, --version and wrong options.
    AppOptions ParseCommandLine();

    /// Says what is wrong with the command line: on standard error or, where there is none, in a
    /// box.
    static void RefuseArguments(const QString& why, bool has_standard_error);

    /// The path of the graph file `name` of the command line, as it stands or in the folder "DATA";
    /// absolute. Shows a box and returns an empty text when there is none.
    static std::string FindGraphFile(const QString& name);

    /// Makes the frame and shows it.
    void InitInstance(const AppOptions& options);

 private:
    /// Makes a window no larger than its screen.
    static void FitIntoScreen(QWidget& window);
    void StartLogs();
    void WatchTermination();
    void TakeScreenshot(const QString& file);

    std::string m_graph_file;  ///< of the command line, once it is known to exist
    std::unique_ptr<QSettings> m_settings;
    std::unique_ptr<CMainFrame> m_frame;  // before the settings go
};

}  // namespace wavo
