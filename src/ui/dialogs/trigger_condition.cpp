#include "ui/dialogs/trigger_condition.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>
#include <array>

#include "support/number_text.h"
#include "ui/dialogs/trigger_condition_controls.h"

namespace wavo {

namespace trigger_condition {

namespace {

constexpr std::array<ControlRow, 9> kControls{{
    {kAxisName, ControlKind::kElidedStatic, "ax.name:", "The axis whose values the trigger tests"},
    {kNone, ControlKind::kRadio, "none", "The axis has no trigger"},
    {kStartAbove, ControlKind::kRadio, "value > trigger limit, start",
     "The recording starts with the first value above the trigger value"},
    {kStartBelow, ControlKind::kRadio, "value < trigger limit, start",
     "The recording starts with the first value below the trigger value"},
    {kStopAbove, ControlKind::kRadio, "value > trigger limit, stop",
     "The recording stops with the first value above the trigger value"},
    {kStopBelow, ControlKind::kRadio, "value < trigger limit, stop",
     "The recording stops with the first value below the trigger value"},
    {kValue, ControlKind::kEdit, "trigger value:",
     "Trigger limit, in the unit of the axis (per s for a velocity, per s² for an acceleration); "
     "left empty, it stays as it was"},
    {kOk, ControlKind::kOk, "OK", "Take this trigger"},
    {kCancel, ControlKind::kCancel, "Cancel", "Leave the trigger as it was"},
}};

struct TypeRadio {
    TriggerTypeCode type;
    Control id;
};

constexpr int kValueWidth = 30;  // characters

/// The triggers by their radio buttons, in the order in which the buttons are asked.
constexpr std::array<TypeRadio, 4> kTriggers{{
    {TriggerTypeCode::kStartAbove, kStartAbove},
    {TriggerTypeCode::kStartBelow, kStartBelow},
    {TriggerTypeCode::kStopAbove, kStopAbove},
    {TriggerTypeCode::kStopBelow, kStopBelow},
}};

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace trigger_condition

namespace tc = trigger_condition;

CTriggerCondition::CTriggerCondition(TriggerEntry& entry, QWidget* parent)
    : TableDialog(QStringLiteral("Trigger condition"), tc::Controls(), parent), m_entry(entry) {
    LayOut();
    ShowEntry();
}

void CTriggerCondition::LayOut() {
    QLabel* const name_label = LabelOf(tc::kAxisName);
    auto* const name_line = new QFormLayout;
    name_line->addRow(name_label, &Control(tc::kAxisName));

    auto* const mode = new QGroupBox(QStringLiteral("trigger mode"), this);
    mode->setAccessibleDescription(QStringLiteral("Whether the trigger starts or stops, and when"));
    auto* const modes = new QVBoxLayout(mode);
    for (const int id :
         {tc::kNone, tc::kStartAbove, tc::kStartBelow, tc::kStopAbove, tc::kStopBelow}) {
        modes->addWidget(&Control(id));
    }

    QLabel* const value_label = LabelOf(tc::kValue);
    name_label->setMinimumWidth(value_label->sizeHint().width());
    auto* const value_line = new QFormLayout;
    value_line->addRow(value_label, &WideEdit(tc::kValue, tc::kValueWidth));

    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(name_line);
    layout->addWidget(mode);
    layout->addLayout(value_line);
    layout->addStretch();
    layout->addWidget(Buttons());
}

void CTriggerCondition::ShowEntry() {
    Control<QLabel>(tc::kAxisName).setText(QString::fromStdString(m_entry.AxName));
    for (const auto& [type, id] : tc::kTriggers) {
        if (m_entry.TriggerType == type) {
            auto& radio = Control<QRadioButton>(id);
            radio.setChecked(true);
            radio.setFocus();
            SetEditText(tc::kValue,
                        QString::fromStdString(FormatSixDecimals(m_entry.TriggerValue)));
            return;
        }
    }
    auto& none = Control<QRadioButton>(tc::kNone);
    none.setChecked(true);
    none.setFocus();
}

void CTriggerCondition::accept() {
    const auto checked = [this](int id) { return Control<QRadioButton>(id).isChecked(); };
    if (checked(tc::kNone)) {
        m_entry.TriggerType = TriggerTypeCode::kNone;
        QDialog::accept();
        return;
    }
    for (const auto& [type, id] : tc::kTriggers) {
        if (checked(id)) {
            m_entry.TriggerType = type;
            const QString text = EditText(tc::kValue);
            if (!text.isEmpty()) {
                m_entry.TriggerValue = ReadDouble(text.toStdString());
            }
            break;
        }
    }
    QDialog::accept();
}

}  // namespace wavo
