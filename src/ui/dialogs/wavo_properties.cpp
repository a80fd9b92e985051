#include "ui/dialogs/wavo_properties.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "graph/draw/display_settings.h"
#include "ui/controls/color_field.h"
#include "ui/controls/controls.h"
#include "ui/controls/elided_label.h"
#include "ui/controls/line_edits.h"
#include "ui/dialogs/choosers.h"
#include "ui/dialogs/properties_texts.h"
#include "ui/dialogs/wavo_properties_controls.h"

namespace wavo {

namespace wavo_properties {

namespace {

constexpr std::array<ControlRow, 13> kControls{{
    {kBackground, "back ground color:", "Background of the graphs; click for another colour"},
    {kSelectFont, "Select", "Choose the font of all texts of the graphs"},
    {kScaleLinesX,
     "number of scale lines x-corr.:", "Vertical scale lines of each graph, at least 1 (else 5)"},
    {kScaleLinesY,
     "number of scale lines y-corr.:", "Horizontal scale lines of each graph, at least 1 (else 3)"},
    {kShowGraphEditor, "show graph editor", "Show the graph editor above the graphs"},
    {kSeparator, "separator:",
     "Between two columns: a character, or 0x and its hexadecimal code (0x09 is a tab, 0x20 a "
     "blank)"},
    {kDecimalPoint, "decimal point:", "In numbers: a point or a comma, not the separator"},
    {kEndOfLine, "end of line:",
     "After each line: hexadecimal codes with commas between them (0x0d,0x0a or 0x0a), or one "
     "character"},
    {kDataFile, "data file:", "File that the values of a graph are written to"},
    {kSelectDataFile, "...", "Choose the data file"},
    {kDefaultValues, "Default Values", "Set everything here to how it was at first; OK keeps it"},
    {kOk, "OK", "Use and keep these settings"},
    {kCancel, "Cancel", "Leave all settings as they were"},
}};

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace wavo_properties

namespace wp = wavo_properties;

namespace {

const ControlRow& Row(int id) {
    return FindRow(wp::Controls(), id);
}

template <typename Widget>
Widget* Make(int id) {
    auto* const widget = new Widget;
    InitControl(*widget, Row(id));
    return widget;
}

/// Settings keep one byte per character. A text that has others becomes one that is no character.
std::string ToBytes(const QString& text) {
    const bool single_bytes =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFFU; });
    return (single_bytes ? text.toLatin1() : text.toUtf8()).toStdString();
}

/// An edit for a few characters.
QLineEdit* MakeShortEdit(int id) {
    auto* const edit = Make<QLineEdit>(id);
    edit->setMaximumWidth(edit->fontMetrics().averageCharWidth() * 24);
    return edit;
}

QString FromBytes(const std::string& bytes) {
    return QString::fromLatin1(QByteArray::fromStdString(bytes));
}

/// Aligns the fields of two forms.
void AlignForms(const QFormLayout& a, const QFormLayout& b) {
    std::vector<QWidget*> labels;
    int width = 0;
    for (const QFormLayout* const form : {&a, &b}) {
        for (int row = 0; row < form->rowCount(); ++row) {
            if (QLayoutItem* const item = form->itemAt(row, QFormLayout::LabelRole)) {
                labels.push_back(item->widget());
                width = std::max(width, item->widget()->sizeHint().width());
            }
        }
    }
    for (QWidget* const label : labels) {
        label->setMinimumWidth(width);
    }
}

}  // namespace

CWavoProperties::CWavoProperties(ViewSettings& settings, QWidget* parent)
    : QDialog(parent), m_settings(settings), m_edited(settings) {
    setWindowTitle(QStringLiteral("Properties"));
    CreateControls();
    KeepOneLineInEdits(*this);
    ShowSettings();
}

void CWavoProperties::CreateControls() {
    auto* const display = new QGroupBox(QStringLiteral("graphs"));
    QFormLayout* const display_form = CreateDisplayPart();
    display->setLayout(display_form);
    QGroupBox* const values = CreateExportPart();
    AlignForms(*display_form, *qobject_cast<QFormLayout*>(values->layout()));

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(display);
    layout->addWidget(values);
    layout->addStretch();
    layout->addLayout(CreateButtons());
}

QFormLayout* CWavoProperties::CreateDisplayPart() {
    auto* const background = Make<ColorField>(wp::kBackground);
    background->setFocusPolicy(Qt::StrongFocus);
    connect(background, &QAbstractButton::clicked, this, [this] { SelectBackground(); });

    auto* const select_font = Make<QPushButton>(wp::kSelectFont);
    select_font->setAutoDefault(false);
    connect(select_font, &QAbstractButton::clicked, this, [this] { SelectFont(); });
    auto* const font_label = new QLabel(QStringLiteral("graphs font:"));
    font_label->setBuddy(select_font);
    auto* const font_name = new ElidedLabel;
    font_name->setObjectName(QStringLiteral("font_name"));
    font_name->setTextFormat(Qt::PlainText);
    font_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* const font = new QHBoxLayout;
    font->addWidget(select_font);
    font->addWidget(font_name, 1);

    auto* const form = new QFormLayout;
    form->addRow(MakeLabel(Row(wp::kBackground), *background), background);
    form->addRow(font_label, font);
    for (const int id : {wp::kScaleLinesX, wp::kScaleLinesY}) {
        QLineEdit* const edit = MakeShortEdit(id);
        form->addRow(MakeLabel(Row(id), *edit), edit);
    }
    form->addRow(Make<QCheckBox>(wp::kShowGraphEditor));
    return form;
}

QGroupBox* CWavoProperties::CreateExportPart() {
    auto* const group = new QGroupBox(QStringLiteral("save values (data export)"));
    auto* const form = new QFormLayout(group);
    for (const int id : {wp::kSeparator, wp::kDecimalPoint, wp::kEndOfLine}) {
        QLineEdit* const edit = MakeShortEdit(id);
        form->addRow(MakeLabel(Row(id), *edit), edit);
    }
    auto* const file = Make<QLineEdit>(wp::kDataFile);
    file->setMinimumWidth(file->fontMetrics().averageCharWidth() * 45);
    auto* const select = Make<QPushButton>(wp::kSelectDataFile);
    select->setAutoDefault(false);
    select->setFixedWidth(select->fontMetrics().averageCharWidth() * 6);
    connect(select, &QAbstractButton::clicked, this, [this] { SelectDataFile(); });
    auto* const line = new QHBoxLayout;
    line->addWidget(file, 1);
    line->addWidget(select);
    form->addRow(MakeLabel(Row(wp::kDataFile), *file), line);
    return group;
}

QLayout* CWavoProperties::CreateButtons() {
    auto* const defaults = Make<QPushButton>(wp::kDefaultValues);
    defaults->setAutoDefault(false);
    connect(defaults, &QAbstractButton::clicked, this, [this] { SetDefaultValues(); });
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    InitControl(*buttons->button(QDialogButtonBox::Ok), Row(wp::kOk));
    InitControl(*buttons->button(QDialogButtonBox::Cancel), Row(wp::kCancel));
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { accept(); });
    connect(buttons, &QDialogButtonBox::rejected, this, [this] { reject(); });
    auto* const line = new QHBoxLayout;
    line->addWidget(defaults);
    line->addStretch();
    line->addWidget(buttons);
    return line;
}

void CWavoProperties::ShowSettings() {
    SetText(wp::kScaleLinesX, QString::number(m_edited.scale_lines_x));
    SetText(wp::kScaleLinesY, QString::number(m_edited.scale_lines_y));
    FindControl<QCheckBox>(*this, wp::kShowGraphEditor)->setChecked(m_edited.show_graph_editor);
    const ExportTexts texts = FormatExportSettings(m_edited.export_settings);
    SetText(wp::kSeparator, FromBytes(texts.separator));
    SetText(wp::kDecimalPoint, FromBytes(texts.decimal_point));
    SetText(wp::kEndOfLine, FromBytes(texts.end_of_line));
    SetText(wp::kDataFile, QString::fromStdString(texts.data_file));
    ShowFont();
    FindControl<ColorField>(*this, wp::kBackground)->SetColor(ToQColor(m_edited.background));
}

void CWavoProperties::ShowFont() {
    const FontDescription& font = m_edited.font;
    QString name = QString::fromStdString(font.face);
    if (font.face != kSystemFace && font.height != 0) {
        name += QStringLiteral(", %1 px").arg(std::abs(std::int64_t{font.height}));
    }
    findChild<QLabel*>(QStringLiteral("font_name"))->setText(name);
}

void CWavoProperties::SelectBackground() {
    if (const auto color = ChooseColor(this, Qt::black)) {
        m_edited.background = ToColorRef(*color);
        FindControl<ColorField>(*this, wp::kBackground)->SetColor(*color);
    }
}

void CWavoProperties::SelectFont() {
    const QFont present = MakeFont(m_edited.font);
    const auto font = ChooseFont(this, present);
    // A font that was only confirmed keeps its description, the name "System" above all.
    if (font && *font != present) {
        m_edited.font = DescribeFont(*font);
        ShowFont();
    }
}

void CWavoProperties::SelectDataFile() {
    const auto path = ChooseSaveFile(
        this, {QStringLiteral("Save As"), EditText(*this, wp::kDataFile), QStringLiteral("txt"),
               QStringLiteral("Data Files (*.txt)|*.txt|All Files (*.*)|*.*||")});
    if (path) {
        SetText(wp::kDataFile, *path);
    }
}

void CWavoProperties::SetDefaultValues() {
    const std::int32_t trace_level = m_edited.trace_level;
    m_edited = DefaultViewSettings();
    m_edited.trace_level = trace_level;
    ShowSettings();
}

void CWavoProperties::accept() {
    m_edited.scale_lines_x =
        ParseScaleLines(EditText(*this, wp::kScaleLinesX).toStdString(), kDefaultScaleLinesX);
    m_edited.scale_lines_y =
        ParseScaleLines(EditText(*this, wp::kScaleLinesY).toStdString(), kDefaultScaleLinesY);
    m_edited.show_graph_editor = FindControl<QCheckBox>(*this, wp::kShowGraphEditor)->isChecked();
    m_edited.export_settings = ParseExportTexts(
        {ToBytes(EditText(*this, wp::kSeparator)), ToBytes(EditText(*this, wp::kDecimalPoint)),
         ToBytes(EditText(*this, wp::kEndOfLine)), EditText(*this, wp::kDataFile).toStdString()});
    m_settings = m_edited;
    QDialog::accept();
}

void CWavoProperties::SetText(int id, const QString& text) {
    FindControl<QLineEdit>(*this, id)->setText(text);
}

}  // namespace wavo
