// Where the controls of the graph editor stand: in titled groups, as many of them beside each other
// as have room.
#pragma once

class QWidget;

namespace wavo {

class EditorFields;

/// Lays out the fields, children of `strip`, in it: in as many rows as its width asks for, which can
/// be scrolled where it is lower than they are.
void LayOutStrip(QWidget& strip, const EditorFields& fields);

}  // namespace wavo
