// What reads the screen aloud finds in the view: the graph editor, and each graph with what it
// shows. Words are made when they are asked for. Of changes it hears where the user or a trigger
// made them, of none that a batch brings; while nothing reads the screen nobody is told.
#pragma once

#include <QAccessible>
#include <QString>
#include <functional>

class QWidget;

namespace wavo {

class CWavoView;

/// From now on the graphs of views are found. To be called before a view is made: what is asked for
/// while it is being made is kept. Returns `parent`.
QWidget* WithAccessibleGraphs(QWidget* parent);

/// The view is made: its graphs can be asked for.
void MakeGraphsAccessible(CWavoView& view);

/// Who hears of changes instead of what reads the screen, and as if something did; null: nobody.
using GraphListener = std::function<void(QAccessible::Event event, QAccessibleInterface& graph)>;
void SetGraphListener(GraphListener listener);

/// What the selected graph of a view shows, in words; what there is instead where there is none.
QString SelectedGraphInWords(CWavoView& view);

}  // namespace wavo
