// Everything of the view that is there for the past: the window that moves through it, recordings
// and their bar below the graphs.
#pragma once

#include <cstdint>
#include <optional>

#include "ui/prompts.h"
#include "view/command_target.h"
#include "view/navigator.h"
#include "view/past_search.h"
#include "view/past_view.h"
#include "view/recording_files.h"

namespace wavo {

class CAxSelect;
class ViewNews;
class ZoomControl;

class PastControl final : public CommandTarget {
 public:
    /// What it works with; none is owned, all outlive it. `zooms` may not be there yet.
    struct Parts {
        QWidget& view;  ///< the bar becomes a child of it
        Session& session;
        GraphBoard& board;
        GraphScreen& screen;
        CAxSelect& editor;
        ZoomControl& zooms;
        ViewNews& news;
        const Prompts& prompts;
    };
    explicit PastControl(const Parts& parts);

    [[nodiscard]] PastView& Window() { return m_window; }
    [[nodiscard]] RecordingFiles& Files() { return m_files; }
    [[nodiscard]] Navigator& Overview() { return *m_overview; }
    [[nodiscard]] PastSearch& Search() { return m_search; }

    // CommandTarget, of all commands that are about the past
    [[nodiscard]] bool IsEnabled(CommandId id) const override {
        return m_search.IsEnabled(id) || m_files.IsEnabled(id);
    }
    void Execute(CommandId id) override;
    /// Whether a command that can be on or off is on.
    [[nodiscard]] bool IsOn(CommandId id) const { return m_files.IsOn(id); }

    /// Goes to the next place where a trigger of the selected graph fires, or to the one before;
    /// its line, nothing when there is none.
    std::optional<std::int64_t> GoToTrigger(bool forward);

    /// Events of the view; each is false for what means nothing here or now.
    bool TakeEvent(QEvent& event);

 private:
    void OnWindowChanged();
    void TellOfWindow();
    [[nodiscard]] Navigator::SelectedCurve SelectedCurve() const;

    const Parts m_parts;
    PastView m_window;
    RecordingFiles m_files;
    PastSearch m_search;
    Navigator* const m_overview;     // child of the view
    bool m_tells_of_window = false;  // that the window has changed, when it was drawn
};

}  // namespace wavo
