#include "ui/graph_editor/strip_layout.h"

#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QWidget>
#include <algorithm>

#include "ui/controls/control_table.h"
#include "ui/controls/flow_layout.h"
#include "ui/graph_editor/editor_fields.h"
#include "ui/graph_editor/editor_group.h"

namespace wavo {

namespace {

using enum EditorControl;

constexpr int kGraphNumberCharacters = 2;
/// By so much the list of the y axes may grow in a wide window.
constexpr int kSpareCharacters = 32;
constexpr int kRowsOfGroup = 4;
constexpr int kSpacing = 3;
/// Pixels that a button keeps around its text.
constexpr int kButtonFrame = 20;
/// Widths of the colour field in its heights: at ease, closed up.
constexpr double kColorFieldWidth = 2.0;
constexpr double kNarrowColorFieldWidth = 1.4;

QString Label(EditorControl id) {
    return QString::fromUtf8(FindEditorRow(id).text);
}

/// Makes the groups of the strip.
class StripLayout {
 public:
    StripLayout(QWidget& strip, const EditorFields& fields) : m_strip(strip), m_fields(fields) {}

    EditorGroup* MakeGraphGroup();
    EditorGroup* MakeXGroup();
    EditorGroup* MakeYGroup();
    EditorGroup* MakeXScaleGroup();
    EditorGroup* MakeYScaleGroup();
    EditorGroup* MakeCirclesGroup();
    EditorGroup* MakeDisplayGroup();

 private:
    [[nodiscard]] QWidget& Control(EditorControl id) const { return m_fields.Control(id); }
    EditorGroup* MakeGroup(const char* title, const char* description);
    /// Puts a control into a cell, with its label in the cell before it and its unit in the one
    /// behind.
    void Place(QGridLayout& grid, EditorControl id, int row, int column, int columns = 1,
               int unit_columns = 1);
    void PlaceLabel(QGridLayout& grid, EditorControl id, int row, int column);

    QWidget& m_strip;
    const EditorFields& m_fields;
};

EditorGroup* StripLayout::MakeGroup(const char* title, const char* description) {
    auto* const group = new EditorGroup(QString::fromLatin1(title), &m_strip);
    SetAccessibleTexts(*group, group->title(), QString::fromLatin1(description));
    group->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    // All groups have the same rows, so that controls beside each other stand on one line.
    const int height =
        std::max({Control(kGraphNumber).sizeHint().height(),
                  Control(kDerivation).sizeHint().height(), Control(kClose).sizeHint().height()});
    for (int row = 0; row < kRowsOfGroup; ++row) {
        group->Grid().setRowMinimumHeight(row, height);
        group->Grid().setRowStretch(row, 1);
    }
    return group;
}

void StripLayout::Place(QGridLayout& grid, EditorControl id, int row, int column, int columns,
                        int unit_columns) {
    const EditorRow& about = FindEditorRow(id);
    QWidget* const control = &Control(id);
    const bool labelled = about.kind == ControlKind::kCombo || about.kind == ControlKind::kEdit;
    grid.addWidget(control, row, column, 1, columns);
    if (labelled && *about.text != '\0') {
        PlaceLabel(grid, id, row, column - 1);
    }
    if (*about.unit != '\0') {
        grid.addWidget(new QLabel(QString::fromUtf8(about.unit)), row, column + columns, 1,
                       unit_columns);
    }
}

void StripLayout::PlaceLabel(QGridLayout& grid, EditorControl id, int row, int column) {
    const EditorRow& about = FindEditorRow(id);
    grid.addWidget(
        MakeLabel({static_cast<int>(id), about.kind, about.text, about.tip}, Control(id)), row,
        column, Qt::AlignRight | Qt::AlignVCenter);
}

EditorGroup* StripLayout::MakeGraphGroup() {
    EditorGroup* const group = MakeGroup("&graph", "Which graph is edited, and what becomes of it");
    QGridLayout& grid = group->Grid();
    m_fields.Combo(kGraphNumber).setMinimumContentsLength(kGraphNumberCharacters);
    Place(grid, kGraphNumber, 0, 1);
    Place(grid, kDeleteGraph, 1, 0, 2);
    Place(grid, kSaveValues, 2, 0, 2);
    Place(grid, kClose, 3, 0, 2);
    return group;
}

EditorGroup* StripLayout::MakeXGroup() {
    EditorGroup* const group =
        MakeGroup("&x-coordinate", "What the graph shows its axes over, and how");
    QGridLayout& grid = group->Grid();
    Place(grid, kXIsTime, 0, 0);
    Place(grid, kXIsAxis, 0, 1);
    Place(grid, kXAxis, 1, 1);
    Place(grid, kClassic, 2, 0);
    Place(grid, kContinuity, 2, 1);
    Place(grid, kLines, 3, 0);
    Place(grid, kPoints, 3, 1);
    return group;
}

EditorGroup* StripLayout::MakeYGroup() {
    EditorGroup* const group =
        MakeGroup("&y-coordinate",
                  "The y axes of the graph: what each shows, in which color, and its trigger");
    QGridLayout& grid = group->Grid();
    const auto make_row = [&grid] {
        auto* const row = new QHBoxLayout;
        row->setSpacing(grid.horizontalSpacing());
        return row;
    };
    QHBoxLayout* const axis = make_row();
    axis->addWidget(&Control(kYAxis), 1);
    axis->addWidget(&Control(kColor));
    PlaceLabel(grid, kYAxis, 0, 0);
    grid.addLayout(axis, 0, 1, 1, 2);
    Place(grid, kDerivation, 1, 0, 1, 2);  // "0. derivation"
    grid.setAlignment(&Control(kDerivation), Qt::AlignRight | Qt::AlignVCenter);
    QHBoxLayout* const axes = make_row();
    axes->addWidget(&Control(kYAxes), 1);
    PlaceLabel(grid, kYAxes, 2, 0);
    grid.addLayout(axes, 2, 1, 1, 4);
    QHBoxLayout* const trigger = make_row();
    trigger->addWidget(&Control(kTrigger));
    trigger->addWidget(&Control(kTriggerState), 1);
    grid.addLayout(trigger, 3, 0, 1, 5);
    for (const EditorControl id : {kAddYAxis, kDeleteYAxis}) {
        Control(id).setFixedWidth(m_strip.fontMetrics().horizontalAdvance(Label(id)) +
                                  kButtonFrame);
    }
    // What is wider is for the list of the axes.
    m_fields.Combo(kYAxis).setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    grid.setColumnStretch(4, 1);
    group->SetArrangement([&grid, axis, axes, color = &Control(kColor), add = &Control(kAddYAxis),
                           remove = &Control(kDeleteYAxis)](bool closed_up) {
        color->setFixedWidth(static_cast<int>(
            color->sizeHint().height() * (closed_up ? kNarrowColorFieldWidth : kColorFieldWidth)));
        grid.removeItem(axis);
        grid.addItem(axis, 0, 1, 1, closed_up ? 4 : 2);
        // The buttons have a column of their own, or stand in rows that are shorter than the
        // others.
        if (closed_up) {
            grid.removeWidget(add);
            grid.removeWidget(remove);
            axis->addWidget(add);
            axes->addWidget(remove);
        } else {
            axis->removeWidget(add);
            axes->removeWidget(remove);
            grid.addWidget(add, 0, 3);
            grid.addWidget(remove, 1, 3);
        }
    });
    group->Measure();
    group->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    group->setMaximumWidth(group->sizeHint().width() +
                           m_strip.fontMetrics().averageCharWidth() * kSpareCharacters);
    return group;
}

EditorGroup* StripLayout::MakeXScaleGroup() {
    EditorGroup* const group = MakeGroup("&scale x", "The range of the x coordinate");
    QGridLayout& grid = group->Grid();
    Place(grid, kXTime, 0, 0);
    Place(grid, kTimeRange, 0, 2);
    Place(grid, kXAutomatic, 1, 0, 2);
    grid.addWidget(&Control(kAllGraphs), 1, 2, 1, 2);
    Place(grid, kXManual, 2, 0);
    Place(grid, kXMinimum, 2, 2, 2);
    Place(grid, kXMaximum, 3, 2, 2);
    return group;
}

EditorGroup* StripLayout::MakeYScaleGroup() {
    EditorGroup* const group = MakeGroup("s&cale y", "The range of the y axis that is looked at");
    QGridLayout& grid = group->Grid();
    Place(grid, kYAutomatic, 0, 0, 2);
    Place(grid, kYManual, 1, 0, 2);
    Place(grid, kYMinimum, 2, 1);
    Place(grid, kYMaximum, 3, 1);
    return group;
}

EditorGroup* StripLayout::MakeCirclesGroup() {
    EditorGroup* const group =
        MakeGroup("&axis over axis", "What a graph of one axis over another shows besides");
    QGridLayout& grid = group->Grid();
    Place(grid, kAutoCircle, 0, 0, 3);
    Place(grid, kInnerCircle, 1, 1);
    Place(grid, kOuterCircle, 2, 1);
    Place(grid, kFadeOutTime, 3, 1);
    return group;
}

EditorGroup* StripLayout::MakeDisplayGroup() {
    EditorGroup* const group = MakeGroup("&display", "Lines at zero, and zooms");
    QGridLayout& grid = group->Grid();
    Place(grid, kZeroLines, 0, 0);
    Place(grid, kZoomEnable, 1, 0);
    Place(grid, kZoomOut, 2, 0);
    return group;
}

/// Asks for as much room as the rows in `rows` need, which is what scrolls in it.
class RoomForRows : public QVBoxLayout {
 public:
    RoomForRows(QWidget& strip, const QWidget& rows) : QVBoxLayout(&strip), m_rows(rows) {}

    [[nodiscard]] bool hasHeightForWidth() const override { return true; }
    [[nodiscard]] int heightForWidth(int width) const override {
        return m_rows.heightForWidth(width);
    }
    [[nodiscard]] QSize sizeHint() const override { return m_rows.sizeHint(); }
    [[nodiscard]] QSize minimumSize() const override { return m_rows.minimumSizeHint(); }

 private:
    const QWidget& m_rows;
};

}  // namespace

void LayOutStrip(QWidget& strip, const EditorFields& fields) {
    auto* const area = new QScrollArea(&strip);
    SetAccessibleTexts(*area, strip.accessibleName(), strip.accessibleDescription());
    area->setFrameShape(QFrame::NoFrame);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidgetResizable(true);
    // In the window of the fields from the start: they keep their order for the Tab key.
    auto* const holder = new QWidget(&strip);
    auto* const around = new RoomForRows(strip, *holder);
    around->setContentsMargins(0, 0, 0, 0);
    around->addWidget(area);
    auto* const flow = new FlowLayout(holder);
    flow->setContentsMargins(kSpacing, kSpacing, kSpacing, kSpacing);
    flow->setSpacing(kSpacing);
    StripLayout layout(*holder, fields);
    for (EditorGroup* const group :
         {layout.MakeGraphGroup(), layout.MakeXGroup(), layout.MakeYGroup(),
          layout.MakeXScaleGroup(), layout.MakeYScaleGroup(), layout.MakeCirclesGroup(),
          layout.MakeDisplayGroup()}) {
        group->Measure();
        flow->addWidget(group);
    }
    area->setWidget(holder);
}

}  // namespace wavo
