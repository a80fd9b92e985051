// The controls of the graph editor as fields: made from their table, read, written, and listened
// to.
//
// Invariants:
// 1. Every control of the table exists once and is found by its number (FindControl).
// 2. What is written here never looks like a user's doing: nobody who listens is called.
// 3. An edit that the user is typing in keeps its text, whatever is written.
#pragma once

#include <QString>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>

#include "ui/graph_editor/editor_controls.h"

class QComboBox;
class QLineEdit;
class QObject;
class QWidget;

namespace wavo {

class EditorFields {
 public:
    /// Makes the controls as children of `strip`, which outlives this object. They stand nowhere
    /// yet.
    explicit EditorFields(QWidget& strip);

    [[nodiscard]] QWidget& Control(EditorControl id) const { return *m_controls.at(id); }
    [[nodiscard]] QComboBox& Combo(EditorControl id) const;

    [[nodiscard]] bool IsChecked(EditorControl id) const;
    /// The text of a control, UTF-8; of a combo, that of its edit part.
    [[nodiscard]] std::string Text(EditorControl id) const;

    /// Checks a control, or unchecks it: then its group may be left without a checked one.
    void SetChecked(EditorControl id, bool checked);
    void SetText(EditorControl id, const QString& text);
    /// A number with that many decimals; nothing for no number.
    void SetNumber(EditorControl id, std::optional<double> value, int decimals);
    void SetEnabled(EditorControl id, bool enabled);

    /// The text of a combo was looked at, whatever came of it. What is written here counts too.
    void NoteTaken(EditorControl id) { m_taken[id] = Text(id); }

    using Handler = std::function<void()>;
    /// Calls `handler` with every click, as long as `listener` lives.
    void OnClick(EditorControl id, const QObject& listener, Handler handler);
    /// The same with every text that the user gives an edit or a combo, by typing or choosing. A
    /// text that was looked at is told once.
    void OnText(EditorControl id, const QObject& listener, Handler handler);
    /// The same when an edit, or the edit part of a combo, is left.
    void OnLeft(EditorControl id, const QObject& listener, Handler handler);

 private:
    class Typing;

    [[nodiscard]] QLineEdit& EditOf(EditorControl id) const;
    /// Whether the combo still has the text that was looked at last.
    [[nodiscard]] bool IsTaken(EditorControl id) const;
    void MakeExclusive(QWidget& strip, std::initializer_list<EditorControl> radios);
    void SetTabOrder();

    std::map<EditorControl, QWidget*> m_controls;  ///< children of the strip
    std::map<EditorControl, std::string> m_taken;  ///< texts of combos
    std::optional<EditorControl> m_typed;          ///< the edit that a handler works for
};

}  // namespace wavo
