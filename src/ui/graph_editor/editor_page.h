// A page of the graph editor: some of its fields, what they show of a graph, and what becomes of it
// when the user operates them.
//
// Invariants:
// 1. What was not taken of a text does not stay when its edit is left.
// 2. No record is referred to across an event loop: a dialog's result goes to the graph that has
//    the number then, if it still has that axis.
#pragma once

#include <QObject>
#include <functional>
#include <optional>

#include "ui/graph_editor/editor_fields.h"
#include "ui/graph_editor/graph_editing.h"

namespace wavo {

class EditorPage : public QObject {
 public:
    /// The references are not owned and outlive the page.
    EditorPage(EditorFields& fields, GraphEditing& editing)
        : m_fields(fields), m_editing(editing) {}

    /// Fills the lists of combos from the document and from what is known besides.
    virtual void FillLists() {}
    /// Shows a graph with one of its y axes, which may be none that it has.
    virtual void Show(const WavoGraph& graph, std::size_t axis) = 0;

 protected:
    using Handler = EditorFields::Handler;

    void OnClick(EditorControl id, Handler handler) {
        m_fields.OnClick(id, *this, std::move(handler));
    }
    void OnText(EditorControl id, Handler handler) {
        m_fields.OnText(id, *this, std::move(handler));
    }
    /// Calls `handler` with the selected graph when an edit is left. Without one all is shown
    /// again.
    void OnLeft(EditorControl id, std::function<void(const WavoGraph& graph)> handler);

    /// Shows a number in place of a text that is another one or none.
    void ShowTakenNumber(EditorControl id, std::optional<double> value, int decimals);

    EditorFields& m_fields;
    GraphEditing& m_editing;
};

}  // namespace wavo
