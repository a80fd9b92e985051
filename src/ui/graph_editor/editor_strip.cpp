#include "ui/graph_editor/editor_strip.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>

#include "ui/controls/color_field.h"
#include "ui/controls/control_table.h"
#include "ui/controls/line_edits.h"
#include "ui/graph_editor/editor_group.h"
#include "ui/graph_editor/flow_layout.h"

namespace wavo {

namespace {

/// Widest text of the edits for bounds and for times, and of the combos.
constexpr char kWidestBound[] = "-100000000.000000";
constexpr char kWidestTime[] = "1000000.000";
constexpr char kWidestRadius[] = "1000.000";
constexpr int kAxisCharacters = 5;
constexpr int kGraphNumberCharacters = 2;
/// By so much the list of the y axes may grow in a wide window.
constexpr int kSpareCharacters = 32;
constexpr int kRowsOfGroup = 4;
constexpr int kSpacing = 3;
/// Pixels that an edit and a button keep around their text.
constexpr int kEditFrame = 12;
constexpr int kButtonFrame = 20;
/// Widths of the colour field in its heights: at ease, closed up.
constexpr double kColorFieldWidth = 2.0;
constexpr double kNarrowColorFieldWidth = 1.4;

bool IsBound(EditorControl id) {
    return id == EditorControl::kXMinimum || id == EditorControl::kXMaximum ||
           id == EditorControl::kYMinimum || id == EditorControl::kYMaximum;
}

ControlRow TextsOf(const EditorRow& row) {
    return {static_cast<int>(row.id), row.text, row.tip};
}

QString Label(EditorControl id) {
    return QString::fromUtf8(FindEditorRow(id).text);
}

QComboBox* MakeCombo(QWidget* parent) {
    auto* const combo = new QComboBox(parent);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setCompleter(nullptr);  // what was typed is what is meant
    combo->setMinimumContentsLength(kAxisCharacters);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

QLineEdit* MakeEdit(const EditorRow& row, QWidget* parent) {
    auto* const edit = new QLineEdit(parent);
    if (row.kind == ControlKind::kReadOnlyEdit) {
        edit->setReadOnly(true);
        return edit;
    }
    const char* const widest = row.id == EditorControl::kDerivation  ? "000"
                               : row.id == EditorControl::kTimeRange ? kWidestTime
                               : IsBound(row.id)                     ? kWidestBound
                                                                     : kWidestRadius;
    edit->setFixedWidth(edit->fontMetrics().horizontalAdvance(QString::fromLatin1(widest)) +
                        kEditFrame);
    edit->setAlignment(Qt::AlignRight);
    return edit;
}

}  // namespace

EditorStrip::EditorStrip(QWidget* parent) : QWidget(parent) {
    setAutoFillBackground(true);
    MakeControls();
    auto* const flow = new FlowLayout(this);
    flow->setContentsMargins(kSpacing, kSpacing, kSpacing, kSpacing);
    flow->setSpacing(kSpacing);
    for (EditorGroup* const group :
         {MakeGraphGroup(), MakeXGroup(), MakeYGroup(), MakeXScaleGroup(), MakeYScaleGroup(),
          MakeCirclesGroup(), MakeViewGroup()}) {
        group->Measure();
        flow->addWidget(group);
    }
    SetTabOrder();
    KeepOneLineInEdits(*this);
}

void EditorStrip::MakeControls() {
    for (const EditorRow& row : EditorControls()) {
        QWidget* const control = MakeControl(row);
        InitControl(*control, TextsOf(row));
        if (*row.text == '\0') {  // nothing beside it says what it is
            control->setAccessibleName(QString::fromUtf8(row.tip));
        }
        m_controls[row.id] = control;
    }
    using enum EditorControl;
    MakeExclusive({kXIsTime, kXIsAxis});
    MakeExclusive({kClassic, kContinuity});
    MakeExclusive({kLines, kPoints});
    MakeExclusive({kXTime, kXAutomatic, kXManual});
    MakeExclusive({kYAutomatic, kYManual});
}

QWidget* EditorStrip::MakeControl(const EditorRow& row) {
    switch (row.kind) {
        case ControlKind::kRadio:
            return new QRadioButton(this);
        case ControlKind::kCheck:
            return new QCheckBox(this);
        case ControlKind::kButton:
            return new QPushButton(this);
        case ControlKind::kCombo:
            return MakeCombo(this);
        case ControlKind::kEdit:
        case ControlKind::kReadOnlyEdit:
            return MakeEdit(row, this);
        case ControlKind::kStatic:
            return new QLabel(this);
        case ControlKind::kColorField:
            return new ColorField(this);
    }
    return nullptr;
}

void EditorStrip::MakeExclusive(std::initializer_list<EditorControl> radios) {
    auto* const group = new QButtonGroup(this);
    for (const EditorControl id : radios) {
        group->addButton(static_cast<QAbstractButton*>(Control(id)));
    }
}

void EditorStrip::SetTabOrder() {
    QWidget* before = nullptr;
    for (const EditorRow& row : EditorControls()) {
        QWidget* const control = Control(row.id);
        if (before != nullptr) {
            setTabOrder(before, control);
        }
        before = control;
    }
}

EditorGroup* EditorStrip::MakeGroup(const char* title) {
    auto* const group = new EditorGroup(QString::fromLatin1(title), this);
    group->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    // All groups have the same rows, so that controls beside each other stand on one line.
    using enum EditorControl;
    const int height =
        std::max({Control(kGraphNumber)->sizeHint().height(),
                  Control(kDerivation)->sizeHint().height(), Control(kClose)->sizeHint().height()});
    for (int row = 0; row < kRowsOfGroup; ++row) {
        group->Grid().setRowMinimumHeight(row, height);
        group->Grid().setRowStretch(row, 1);
    }
    return group;
}

void EditorStrip::Place(QGridLayout& grid, EditorControl id, int row, int column, int columns,
                        int unit_columns) {
    const EditorRow& about = FindEditorRow(id);
    QWidget* const control = Control(id);
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

void EditorStrip::PlaceLabel(QGridLayout& grid, EditorControl id, int row, int column) {
    grid.addWidget(MakeLabel(TextsOf(FindEditorRow(id)), *Control(id)), row, column,
                   Qt::AlignRight | Qt::AlignVCenter);
}

EditorGroup* EditorStrip::MakeGraphGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&graph");
    QGridLayout& grid = group->Grid();
    Combo(kGraphNumber)->setMinimumContentsLength(kGraphNumberCharacters);
    Place(grid, kGraphNumber, 0, 1);
    Place(grid, kDeleteGraph, 1, 0, 2);
    Place(grid, kSaveValues, 2, 0, 2);
    Place(grid, kClose, 3, 0, 2);
    return group;
}

EditorGroup* EditorStrip::MakeXGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&x-coordinate");
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

EditorGroup* EditorStrip::MakeYGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&y-coordinate");
    QGridLayout& grid = group->Grid();
    const auto make_row = [&grid] {
        auto* const row = new QHBoxLayout;
        row->setSpacing(grid.horizontalSpacing());
        return row;
    };
    QHBoxLayout* const axis = make_row();
    axis->addWidget(Control(kYAxis), 1);
    axis->addWidget(Control(kColor));
    PlaceLabel(grid, kYAxis, 0, 0);
    grid.addLayout(axis, 0, 1, 1, 2);
    Place(grid, kDerivation, 1, 0, 1, 2);  // "0. derivation"
    grid.setAlignment(Control(kDerivation), Qt::AlignRight | Qt::AlignVCenter);
    QHBoxLayout* const axes = make_row();
    axes->addWidget(Control(kYAxes), 1);
    PlaceLabel(grid, kYAxes, 2, 0);
    grid.addLayout(axes, 2, 1, 1, 4);
    QHBoxLayout* const trigger = make_row();
    trigger->addWidget(Control(kTrigger));
    trigger->addWidget(Control(kTriggerState), 1);
    grid.addLayout(trigger, 3, 0, 1, 5);
    for (const EditorControl id : {kAddYAxis, kDeleteYAxis}) {
        Control(id)->setFixedWidth(fontMetrics().horizontalAdvance(Label(id)) + kButtonFrame);
    }
    // What is wider is for the list of the axes.
    Combo(kYAxis)->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    grid.setColumnStretch(4, 1);
    group->SetArrangement([this, &grid, axis, axes](bool closed_up) {
        QWidget* const color = Control(kColor);
        color->setFixedWidth(static_cast<int>(
            color->sizeHint().height() * (closed_up ? kNarrowColorFieldWidth : kColorFieldWidth)));
        grid.removeItem(axis);
        grid.addItem(axis, 0, 1, 1, closed_up ? 4 : 2);
        // The buttons have a column of their own, or stand in rows that are shorter than the
        // others.
        if (closed_up) {
            grid.removeWidget(Control(kAddYAxis));
            grid.removeWidget(Control(kDeleteYAxis));
            axis->addWidget(Control(kAddYAxis));
            axes->addWidget(Control(kDeleteYAxis));
        } else {
            axis->removeWidget(Control(kAddYAxis));
            axes->removeWidget(Control(kDeleteYAxis));
            grid.addWidget(Control(kAddYAxis), 0, 3);
            grid.addWidget(Control(kDeleteYAxis), 1, 3);
        }
    });
    group->Measure();
    group->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    group->setMaximumWidth(group->sizeHint().width() +
                           fontMetrics().averageCharWidth() * kSpareCharacters);
    return group;
}

EditorGroup* EditorStrip::MakeXScaleGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&scale x");
    QGridLayout& grid = group->Grid();
    Place(grid, kXTime, 0, 0);
    Place(grid, kTimeRange, 0, 2);
    Place(grid, kXAutomatic, 1, 0, 2);
    grid.addWidget(Control(kAllGraphs), 1, 2, 1, 2);
    Place(grid, kXManual, 2, 0);
    Place(grid, kXMinimum, 2, 2, 2);
    Place(grid, kXMaximum, 3, 2, 2);
    return group;
}

EditorGroup* EditorStrip::MakeYScaleGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("s&cale y");
    QGridLayout& grid = group->Grid();
    Place(grid, kYAutomatic, 0, 0, 2);
    Place(grid, kYManual, 1, 0, 2);
    Place(grid, kYMinimum, 2, 1);
    Place(grid, kYMaximum, 3, 1);
    return group;
}

EditorGroup* EditorStrip::MakeCirclesGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&axis over axis");
    QGridLayout& grid = group->Grid();
    Place(grid, kAutoCircle, 0, 0, 3);
    Place(grid, kInnerCircle, 1, 1);
    Place(grid, kOuterCircle, 2, 1);
    Place(grid, kFadeOutTime, 3, 1);
    return group;
}

EditorGroup* EditorStrip::MakeViewGroup() {
    using enum EditorControl;
    EditorGroup* const group = MakeGroup("&display");
    QGridLayout& grid = group->Grid();
    Place(grid, kZeroLines, 0, 0);
    Place(grid, kZoomEnable, 1, 0);
    Place(grid, kZoomOut, 2, 0);
    return group;
}

QComboBox* EditorStrip::Combo(EditorControl id) const {
    return static_cast<QComboBox*>(Control(id));
}

bool EditorStrip::IsChecked(EditorControl id) const {
    return static_cast<const QAbstractButton*>(Control(id))->isChecked();
}

std::string EditorStrip::Text(EditorControl id) const {
    switch (FindEditorRow(id).kind) {
        case ControlKind::kCombo:
            return Combo(id)->currentText().toStdString();
        case ControlKind::kEdit:
        case ControlKind::kReadOnlyEdit:
            return static_cast<const QLineEdit*>(Control(id))->text().toStdString();
        case ControlKind::kStatic:
            return static_cast<const QLabel*>(Control(id))->text().toStdString();
        case ControlKind::kRadio:
        case ControlKind::kCheck:
        case ControlKind::kButton:
            return static_cast<const QAbstractButton*>(Control(id))->text().toStdString();
        case ControlKind::kColorField:
            break;
    }
    return {};
}

void EditorStrip::SetChecked(EditorControl id, bool checked) {
    auto* const button = static_cast<QAbstractButton*>(Control(id));
    QButtonGroup* const group = button->group();
    if (group != nullptr && !checked) {
        // A group that allows one checked button only does not let it be unchecked.
        group->setExclusive(false);
        button->setChecked(false);
        group->setExclusive(true);
        return;
    }
    button->setChecked(checked);
}

void EditorStrip::SetText(EditorControl id, const QString& text) {
    if (id == m_typed) {
        return;
    }
    QWidget* const control = Control(id);
    if (auto* const combo = qobject_cast<QComboBox*>(control)) {
        combo->setCurrentIndex(combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
        combo->setEditText(text);
        NoteTaken(id);
    } else if (auto* const edit = qobject_cast<QLineEdit*>(control)) {
        edit->setText(text);
        edit->setCursorPosition(0);
    } else if (auto* const label = qobject_cast<QLabel*>(control)) {
        label->setText(text);
    }
}

bool EditorStrip::IsTaken(EditorControl id) const {
    const auto taken = m_taken.find(id);
    return taken != m_taken.end() && taken->second == Text(id);
}

void EditorStrip::SetNumber(EditorControl id, std::optional<double> value, int decimals) {
    SetText(id, value.has_value() ? QString::number(*value, 'f', decimals) : QString());
}

void EditorStrip::SetEnabled(EditorControl id, bool enabled) {
    Control(id)->setEnabled(enabled);
}

}  // namespace wavo
