// Messages inside the program: between graph editor, view and frame.
//
// One event class carries them all. Posted messages are handled by the receiver's event loop,
// sent ones before SendAppMessage returns.
#pragma once

#include <QEvent>
#include <cstdint>

class QObject;

namespace wavo {

enum class AppMessage : std::uint32_t {
    kEditorClosed = 0x590,        ///< editor to view, sent: the editor was closed
    kGraphChanged = 0x591,        ///< editor to view, posted: lParam graph number or kNoGraph
    kSaveValues = 0x592,          ///< editor to view, sent: lParam pointer to the graph record
    kZoomOut = 0x593,             ///< editor to view, sent: lParam graph number
    kCloseEditor = 0x658,         ///< view to editor
    kSelectGraph = 0x659,         ///< view to editor: lParam graph number
    kSelectGraphAndTime = 0x65A,  ///< view to editor: lParam pointer to a GraphAndTime
    kRecordingEnded = 0x6BC,      ///< graph to frame, sent: a recording after a start trigger ended
};

/// lParam of kGraphChanged when no particular graph changed: the 32-bit value, zero-extended.
inline constexpr std::int64_t kNoGraph = 0xFFFFFFFF;

/// What kSelectGraphAndTime points to.
struct GraphAndTime {
    std::uint32_t graph_number;
    double time;  ///< seconds
};

class AppMessageEvent : public QEvent {
 public:
    AppMessageEvent(AppMessage number, std::uint64_t w_param, std::int64_t l_param);

    static QEvent::Type EventType();

    [[nodiscard]] AppMessage number() const { return m_number; }
    [[nodiscard]] std::uint64_t wParam() const { return m_w_param; }
    [[nodiscard]] std::int64_t lParam() const { return m_l_param; }

    /// The receiver's answer to a sent message; 0 when it sets none.
    void SetResult(std::int64_t result) { m_result = result; }
    [[nodiscard]] std::int64_t result() const { return m_result; }

 private:
    const AppMessage m_number;
    const std::uint64_t m_w_param;
    const std::int64_t m_l_param;
    std::int64_t m_result = 0;
};

/// Queues a message for `receiver` (may be null: nothing happens).
void PostAppMessage(QObject* receiver, AppMessage number, std::uint64_t w_param,
                    std::int64_t l_param);

/// Hands a message to `receiver` at once and returns its result (0 for a null receiver).
std::int64_t SendAppMessage(QObject* receiver, AppMessage number, std::uint64_t w_param,
                            std::int64_t l_param);

}  // namespace wavo
