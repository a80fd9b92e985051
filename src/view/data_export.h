// Saving the values of a graph to a text file, as the user asks for it in the graph editor: which
// values, to which file, and what happens while a long file is written.
//
// Invariants:
// 1. The values are those of the moment of the request. Values that arrive while the dialog is open
//    or the file is written are drawn and answered as ever, and are not in the file.
// 2. There is one export at a time: a request that comes while one is under way does nothing.
// 3. The path that the user chose is kept in the settings, and the settings are saved, before the
//    file is written, whatever becomes of it.
// 4. Events are handled while a file is written, some 50 times a second, on the one thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "graph/model/wavo_graph.h"
#include "session/save_values.h"
#include "settings/export_settings.h"
#include "ui/prompts.h"

class QDialog;
class QWidget;

namespace wavo {

class ExportProgress;
class GraphBoard;

class DataExport {
 public:
    using Clock = std::function<std::chrono::milliseconds()>;

    /// What an export reaches besides the graphs.
    struct Surroundings {
        ExportSettings& settings;                           ///< the user's; not owned
        std::function<void()> save_settings;                ///< a fault is shown by this call
        std::function<void(const std::string&)> unwritten;  ///< shows that a file is not written
        std::function<QWidget*()> window;  ///< that the dialogs belong to; may give null
        const Prompts& prompts;            ///< not owned
    };

    /// An export that takes longer than this shows how far it has come.
    static constexpr std::chrono::milliseconds kPatience{500};
    /// Events wait no longer than this, and the time of one write.
    static constexpr std::chrono::milliseconds kEventPause{20};

    /// `board` is not owned and outlives the export. `clock` only ever goes forward.
    DataExport(const GraphBoard& board, Surroundings surroundings, Clock clock = SteadyClock);
    ~DataExport();
    DataExport(const DataExport&) = delete;
    DataExport& operator=(const DataExport&) = delete;

    /// The request of the graph editor: asks for the file and writes the values that the drawn
    /// graph of this number holds. `graph` may be null and is not used after the dialog has
    /// opened. Faults go to the error log. Returns 1.
    std::int64_t OnSaveValues(const WavoGraph* graph);

    /// Ends the export that is under way, if any: the dialog closes, the rows that are written
    /// stay. For the end of the window or the program.
    void Cancel();

    [[nodiscard]] bool IsUnderWay() const { return m_is_under_way; }

    static std::chrono::milliseconds SteadyClock();

 private:
    void Export(const WavoGraph& graph);
    void CollectColumns(const WavoGraph& graph, const std::vector<std::string>& axis_names);
    /// Asks for the path; false when the user wants no file.
    bool AskForPath(const std::vector<std::string>& axis_names, std::string& path);
    void WriteFile();
    /// Between two pieces of the file: shows the progress and lets events be handled, when it is
    /// time. False: end it.
    bool GoOn(std::uint64_t written, std::uint64_t total);

    const GraphBoard& m_board;
    const Surroundings m_surroundings;
    const Clock m_clock;

    SaveValues m_DataExport;
    bool m_is_under_way = false;
    bool m_is_cancelled = false;
    QDialog* m_path_dialog = nullptr;            // while it is open
    std::unique_ptr<ExportProgress> m_progress;  // while it shows
    std::string m_path;                          // that is written
    std::chrono::milliseconds m_begin{};         // of the writing
    std::chrono::milliseconds m_events_handled{};
};

/// The axes of a graph, each once: those of the y coordinate in order, then that of x.
std::vector<std::string> ExportedAxisNames(const WavoGraph& graph);

}  // namespace wavo
