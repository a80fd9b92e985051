#include "ui/graph_editor/editor_fields.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QWidget>
#include <utility>

#include "ui/controls/line_edits.h"

namespace wavo {

namespace {

using enum EditorControl;

/// Widest text of the edits for bounds and for times, and of the combos.
constexpr char kWidestBound[] = "-100000000.000000";
constexpr char kWidestTime[] = "1000000.000";
constexpr char kWidestRadius[] = "1000.000";
constexpr char kWidestDerivation[] = "000";
constexpr int kAxisCharacters = 5;
/// Pixels that an edit keeps around its text.
constexpr int kEditFrame = 12;

const char* WidestText(EditorControl id) {
    switch (id) {
        case kDerivation:
            return kWidestDerivation;
        case kTimeRange:
            return kWidestTime;
        case kXMinimum:
        case kXMaximum:
        case kYMinimum:
        case kYMaximum:
            return kWidestBound;
        default:
            return kWidestRadius;
    }
}

void FitCombo(QComboBox& combo) {
    combo.setEditable(true);
    combo.setInsertPolicy(QComboBox::NoInsert);
    combo.setCompleter(nullptr);  // what was typed is what is meant
    combo.setMinimumContentsLength(kAxisCharacters);
    combo.setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
}

void FitEdit(QLineEdit& edit, EditorControl id) {
    edit.setFixedWidth(edit.fontMetrics().horizontalAdvance(QString::fromLatin1(WidestText(id))) +
                       kEditFrame);
    edit.setAlignment(Qt::AlignRight);
}

QWidget* MakeField(const EditorRow& row, QWidget& strip) {
    const ControlRow about{static_cast<int>(row.id), row.kind, row.text, row.tip};
    QWidget* const control = MakeControl(about, &strip);
    if (row.kind == ControlKind::kCombo) {
        FitCombo(static_cast<QComboBox&>(*control));
    } else if (row.kind == ControlKind::kEdit) {
        FitEdit(static_cast<QLineEdit&>(*control), row.id);
    }
    InitControl(*control, about);
    if (*row.text == '\0') {  // nothing beside it says what it is
        SetAccessibleTexts(*control, QString::fromUtf8(row.tip), control->toolTip());
    }
    return control;
}

}  // namespace

/// Marks the edit that a handler works for; no text is written into it meanwhile.
class EditorFields::Typing {
 public:
    Typing(EditorFields& fields, EditorControl id) : m_fields(fields) { m_fields.m_typed = id; }
    ~Typing() { m_fields.m_typed.reset(); }
    Typing(const Typing&) = delete;
    Typing& operator=(const Typing&) = delete;

 private:
    EditorFields& m_fields;
};

EditorFields::EditorFields(QWidget& strip) {
    for (const EditorRow& row : EditorControls()) {
        m_controls[row.id] = MakeField(row, strip);
    }
    MakeExclusive(strip, {kXIsTime, kXIsAxis});
    MakeExclusive(strip, {kClassic, kContinuity});
    MakeExclusive(strip, {kLines, kPoints});
    MakeExclusive(strip, {kXTime, kXAutomatic, kXManual});
    MakeExclusive(strip, {kYAutomatic, kYManual});
    SetTabOrder();
    KeepOneLineInEdits(strip);
}

void EditorFields::MakeExclusive(QWidget& strip, std::initializer_list<EditorControl> radios) {
    auto* const group = new QButtonGroup(&strip);
    for (const EditorControl id : radios) {
        group->addButton(&static_cast<QAbstractButton&>(Control(id)));
    }
}

void EditorFields::SetTabOrder() {
    QWidget* before = nullptr;
    for (const EditorRow& row : EditorControls()) {
        QWidget* const control = &Control(row.id);
        if (before != nullptr) {
            QWidget::setTabOrder(before, control);
        }
        before = control;
    }
}

QComboBox& EditorFields::Combo(EditorControl id) const {
    return static_cast<QComboBox&>(Control(id));
}

QLineEdit& EditorFields::EditOf(EditorControl id) const {
    return FindEditorRow(id).kind == ControlKind::kCombo ? *Combo(id).lineEdit()
                                                         : static_cast<QLineEdit&>(Control(id));
}

bool EditorFields::IsChecked(EditorControl id) const {
    return static_cast<const QAbstractButton&>(Control(id)).isChecked();
}

std::string EditorFields::Text(EditorControl id) const {
    const QWidget& control = Control(id);
    if (const auto* const combo = qobject_cast<const QComboBox*>(&control)) {
        return combo->currentText().toStdString();
    }
    if (const auto* const edit = qobject_cast<const QLineEdit*>(&control)) {
        return edit->text().toStdString();
    }
    if (const auto* const label = qobject_cast<const QLabel*>(&control)) {
        return label->text().toStdString();
    }
    const auto* const button = qobject_cast<const QAbstractButton*>(&control);
    return button == nullptr ? std::string() : button->text().toStdString();
}

void EditorFields::SetChecked(EditorControl id, bool checked) {
    auto& button = static_cast<QAbstractButton&>(Control(id));
    QButtonGroup* const group = button.group();
    if (group != nullptr && !checked) {
        // A group that allows one checked button only does not let it be unchecked.
        group->setExclusive(false);
        button.setChecked(false);
        group->setExclusive(true);
        return;
    }
    button.setChecked(checked);
    if (group != nullptr) {
        // The toolkit lets Tab lead to the one that had the keyboard last: it may be disabled now.
        for (QAbstractButton* const each : group->buttons()) {
            each->setFocusPolicy(each == &button ? Qt::StrongFocus : Qt::ClickFocus);
        }
    }
}

void EditorFields::SetText(EditorControl id, const QString& text) {
    if (id == m_typed) {
        return;
    }
    QWidget& control = Control(id);
    if (auto* const combo = qobject_cast<QComboBox*>(&control)) {
        combo->setCurrentIndex(combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
        combo->setEditText(text);
        NoteTaken(id);
    } else if (auto* const edit = qobject_cast<QLineEdit*>(&control)) {
        edit->setText(text);
        edit->setCursorPosition(0);
    } else if (auto* const label = qobject_cast<QLabel*>(&control)) {
        label->setText(text);
    }
}

bool EditorFields::IsTaken(EditorControl id) const {
    const auto taken = m_taken.find(id);
    return taken != m_taken.end() && taken->second == Text(id);
}

void EditorFields::SetNumber(EditorControl id, std::optional<double> value, int decimals) {
    SetText(id, value.has_value() ? QString::number(*value, 'f', decimals) : QString());
}

void EditorFields::SetEnabled(EditorControl id, bool enabled) {
    Control(id).setEnabled(enabled);
}

void EditorFields::OnClick(EditorControl id, const QObject& listener, Handler handler) {
    QObject::connect(&static_cast<QAbstractButton&>(Control(id)), &QAbstractButton::clicked,
                     &listener, std::move(handler));
}

void EditorFields::OnText(EditorControl id, const QObject& listener, Handler handler) {
    const bool is_combo = FindEditorRow(id).kind == ControlKind::kCombo;
    if (is_combo) {
        // A combo tells an entry once more when it is left, and Enter tells what was typed before.
        QObject::connect(&Combo(id), &QComboBox::activated, &listener, [this, id, handler] {
            if (!IsTaken(id)) {
                handler();
                NoteTaken(id);
            }
        });
    }
    QObject::connect(&EditOf(id), &QLineEdit::textEdited, &listener,
                     [this, id, is_combo, handler = std::move(handler)] {
                         const Typing typing(*this, id);
                         handler();
                         if (is_combo) {
                             NoteTaken(id);
                         }
                     });
}

void EditorFields::OnLeft(EditorControl id, const QObject& listener, Handler handler) {
    QObject::connect(&EditOf(id), &QLineEdit::editingFinished, &listener, std::move(handler));
}

}  // namespace wavo
