// The strip of the graph editor: its controls, made from their table, in groups, and what the
// editor reads from them and writes into them.
//
// Invariants:
// 1. Every control of the table exists once and is found by its number (FindControl).
// 2. What is written here never looks like a user's doing: no handler of the editor runs.
// 3. An edit that the user is typing in keeps its text, whatever is written.
#pragma once

#include <QString>
#include <QWidget>
#include <map>
#include <optional>
#include <string>

#include "ui/graph_editor/editor_controls.h"

class QComboBox;
class QGridLayout;

namespace wavo {

class EditorGroup;

class EditorStrip : public QWidget {
 public:
    explicit EditorStrip(QWidget* parent = nullptr);

    [[nodiscard]] bool IsChecked(EditorControl id) const;
    /// The text of a control, UTF-8; of a combo, that of its edit part.
    [[nodiscard]] std::string Text(EditorControl id) const;

 protected:
    [[nodiscard]] QWidget* Control(EditorControl id) const { return m_controls.at(id); }
    [[nodiscard]] QComboBox* Combo(EditorControl id) const;

    /// Checks a control, or unchecks it: then its group may be left without a checked one.
    void SetChecked(EditorControl id, bool checked);
    void SetText(EditorControl id, const QString& text);
    /// A number with that many decimals; nothing for no number.
    void SetNumber(EditorControl id, std::optional<double> value, int decimals);
    void SetEnabled(EditorControl id, bool enabled);

    /// The text of a combo was looked at, whatever came of it. What is written here counts too.
    void NoteTaken(EditorControl id) { m_taken[id] = Text(id); }
    /// Whether the combo still has the text that was looked at last.
    [[nodiscard]] bool IsTaken(EditorControl id) const;

    /// Marks the edit that a handler works for; no text is written into it meanwhile.
    class Typing {
     public:
        Typing(EditorStrip& strip, EditorControl id) : m_strip(strip) { m_strip.m_typed = id; }
        ~Typing() { m_strip.m_typed.reset(); }
        Typing(const Typing&) = delete;
        Typing& operator=(const Typing&) = delete;

     private:
        EditorStrip& m_strip;
    };

 private:
    void MakeControls();
    QWidget* MakeControl(const EditorRow& row);
    EditorGroup* MakeGroup(const char* title);
    EditorGroup* MakeGraphGroup();
    EditorGroup* MakeXGroup();
    EditorGroup* MakeYGroup();
    EditorGroup* MakeXScaleGroup();
    EditorGroup* MakeYScaleGroup();
    EditorGroup* MakeCirclesGroup();
    EditorGroup* MakeViewGroup();
    /// Puts a control into a cell, with its label in the cell before it and its unit in the one
    /// behind.
    void Place(QGridLayout& grid, EditorControl id, int row, int column, int columns = 1,
               int unit_columns = 1);
    void PlaceLabel(QGridLayout& grid, EditorControl id, int row, int column);
    void MakeExclusive(std::initializer_list<EditorControl> radios);
    void SetTabOrder();

    std::map<EditorControl, QWidget*> m_controls;  ///< children
    std::map<EditorControl, std::string> m_taken;  ///< texts of combos
    std::optional<EditorControl> m_typed;
};

}  // namespace wavo
