// What a session tells the one who shows it.
#pragma once

#include <string>

namespace wavo {

/// Panes of the status bar, by index.
enum class StatusPane { kMessage = 0, kTotalLines = 1, kCycleTime = 2 };

class SessionObserver {
 public:
    virtual ~SessionObserver() = default;

    virtual void PaneTextChanged(StatusPane pane, const std::string& text) = 0;
    /// The frame has a new title.
    virtual void TitleChanged(const std::string& title) = 0;
    /// What can be commanded may have changed.
    virtual void CommandsChanged() = 0;
    /// A graph file was opened that belongs into the list of recent files.
    virtual void FileOpened(const std::string& path) = 0;

    /// The document or the axes are others: who edits graphs takes them anew; with `forget` what he
    /// knew of the former ones is void. False when he cannot.
    virtual bool EditDocument(bool forget) = 0;
    /// There was a graph to edit since EditDocument.
    [[nodiscard]] virtual bool HasEditedGraphs() const = 0;
    /// The graphs are others or look differently: makes all anew, draws and shows them.
    virtual void GraphsChanged() = 0;
    /// Other graphs take the place of those of the live values for a while: what is seen of these
    /// is kept. Their buffers are still there, and will be when they come back.
    virtual void LiveGraphsLeave() = 0;
    /// The next GraphsChanged shows them as they were.
    virtual void LiveGraphsComeBack() = 0;
    /// Draws the new values into all graphs and shows them; ends with Acquisition::AnswerDrawn.
    virtual void ValuesArrived() = 0;
    /// True while all graphs are being drawn.
    [[nodiscard]] virtual bool IsDrawing() const = 0;
    /// Values flow, or flow again: graphs leave their zooms, are drawn and shown. With `anew` they
    /// begin anew.
    virtual void RunBegins(bool anew) = 0;
    /// Start or Stop was done. `values_flow`: what graphs hold is not to be relied on for long.
    virtual void RunStateChanged(bool values_flow) = 0;

    /// Message box with caption "ERROR".
    virtual void ShowError(const std::string& text) = 0;
    /// The master told the viewer to end: ends the process with exit code 0 as soon as the handlers
    /// that run have returned.
    virtual void EndProcess() = 0;
};

}  // namespace wavo
