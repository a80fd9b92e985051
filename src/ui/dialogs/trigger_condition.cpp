#include "ui/dialogs/trigger_condition.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <array>

#include "support/number_text.h"
#include "ui/controls/controls.h"
#include "ui/controls/elided_label.h"
#include "ui/controls/line_edits.h"
#include "ui/dialogs/trigger_condition_controls.h"

namespace wavo {

namespace trigger_condition {

namespace {

constexpr std::array<ControlRow, 9> kControls{{
    {kAxisName, "ax.name:", "The axis whose values the trigger tests"},
    {kNone, "none", "The axis has no trigger"},
    {kStartAbove, "value > trigger limit, start",
     "The recording starts with the first value above the trigger value"},
    {kStartBelow, "value < trigger limit, start",
     "The recording starts with the first value below the trigger value"},
    {kStopAbove, "value > trigger limit, stop",
     "The recording stops with the first value above the trigger value"},
    {kStopBelow, "value < trigger limit, stop",
     "The recording stops with the first value below the trigger value"},
    {kValue, "trigger value:",
     "Trigger limit, in the unit of the axis (per s for a velocity, per s² for an acceleration); "
     "left empty, it stays as it was"},
    {kOk, "OK", "Take this trigger"},
    {kCancel, "Cancel", "Leave the trigger as it was"},
}};

struct TypeRadio {
    TriggerTypeCode type;
    Control id;
};

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
    : QDialog(parent), m_entry(entry) {
    setWindowTitle(QStringLiteral("Trigger condition"));
    CreateControls();
    KeepOneLineInEdits(*this);
    ShowEntry();
}

void CTriggerCondition::CreateControls() {
    const auto row = [](int id) -> const ControlRow& { return FindRow(tc::Controls(), id); };

    auto* const name = new ElidedLabel;
    InitControl(*name, row(tc::kAxisName));
    name->setTextFormat(Qt::PlainText);
    name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    QLabel* const name_label = MakeLabel(row(tc::kAxisName), *name);
    auto* const name_line = new QFormLayout;
    name_line->addRow(name_label, name);

    auto* const mode = new QGroupBox(QStringLiteral("trigger mode"));
    auto* const modes = new QVBoxLayout(mode);
    for (const int id :
         {tc::kNone, tc::kStartAbove, tc::kStartBelow, tc::kStopAbove, tc::kStopBelow}) {
        auto* const radio = new QRadioButton;
        InitControl(*radio, row(id));
        modes->addWidget(radio);
    }

    auto* const value = new QLineEdit;
    InitControl(*value, row(tc::kValue));
    value->setMinimumWidth(value->fontMetrics().averageCharWidth() * 30);
    QLabel* const value_label = MakeLabel(row(tc::kValue), *value);
    name_label->setMinimumWidth(value_label->sizeHint().width());
    auto* const value_line = new QFormLayout;
    value_line->addRow(value_label, value);

    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    InitControl(*buttons->button(QDialogButtonBox::Ok), row(tc::kOk));
    InitControl(*buttons->button(QDialogButtonBox::Cancel), row(tc::kCancel));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });

    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(name_line);
    layout->addWidget(mode);
    layout->addLayout(value_line);
    layout->addStretch();
    layout->addWidget(buttons);
}

void CTriggerCondition::ShowEntry() {
    FindControl<QLabel>(*this, tc::kAxisName)->setText(QString::fromStdString(m_entry.AxName));
    for (const auto& [type, id] : tc::kTriggers) {
        if (m_entry.TriggerType == type) {
            auto* const radio = FindControl<QRadioButton>(*this, id);
            radio->setChecked(true);
            radio->setFocus();
            FindControl<QLineEdit>(*this, tc::kValue)
                ->setText(QString::fromStdString(FormatSixDecimals(m_entry.TriggerValue)));
            return;
        }
    }
    auto* const none = FindControl<QRadioButton>(*this, tc::kNone);
    none->setChecked(true);
    none->setFocus();
}

void CTriggerCondition::accept() {
    const auto checked = [this](int id) {
        return FindControl<QRadioButton>(*this, id)->isChecked();
    };
    if (checked(tc::kNone)) {
        m_entry.TriggerType = TriggerTypeCode::kNone;
        QDialog::accept();
        return;
    }
    for (const auto& [type, id] : tc::kTriggers) {
        if (checked(id)) {
            m_entry.TriggerType = type;
            const QString text = EditText(*this, tc::kValue);
            if (!text.isEmpty()) {
                m_entry.TriggerValue = ReadDouble(text.toStdString());
            }
            break;
        }
    }
    QDialog::accept();
}

}  // namespace wavo
