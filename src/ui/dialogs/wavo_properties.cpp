#include "ui/dialogs/wavo_properties.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "graph/draw/display_settings.h"
#include "ui/controls/color_field.h"
#include "ui/controls/elided_label.h"
#include "ui/dialogs/properties_texts.h"
#include "ui/dialogs/wavo_properties_controls.h"

namespace wavo {

namespace wavo_properties {

namespace {

constexpr std::array<ControlRow, 13> kControls{{
    {kBackground, ControlKind::kColorField,
     "back ground color:", "Background of the graphs; click for another colour"},
    {kSelectFont, ControlKind::kButton, "Select", "Choose the font of all texts of the graphs"},
    {kScaleLinesX, ControlKind::kEdit,
     "number of scale lines x-corr.:", "Vertical scale lines of each graph, at least 1 (else 5)"},
    {kScaleLinesY, ControlKind::kEdit,
     "number of scale lines y-corr.:", "Horizontal scale lines of each graph, at least 1 (else 3)"},
    {kShowGraphEditor, ControlKind::kCheck, "show graph editor",
     "Show the graph editor above the graphs"},
    {kSeparator, ControlKind::kEdit, "separator:",
     "Between two columns: a character, or 0x and its hexadecimal code (0x09 is a tab, 0x20 a "
     "blank)"},
    {kDecimalPoint, ControlKind::kEdit,
     "decimal point:", "In numbers: a point or a comma, not the separator"},
    {kEndOfLine, ControlKind::kEdit, "end of line:",
     "After each line: hexadecimal codes with commas between them (0x0d,0x0a or 0x0a), or one "
     "character"},
    {kDataFile, ControlKind::kEdit, "data file:", "File that the values of a graph are written to"},
    {kSelectDataFile, ControlKind::kButton, "...", "Choose the data file"},
    {kDefaultValues, ControlKind::kButton, "Default Values",
     "Set everything here to how it was at first; OK keeps it"},
    {kOk, ControlKind::kOk, "OK", "Use and keep these settings"},
    {kCancel, ControlKind::kCancel, "Cancel", "Leave all settings as they were"},
}};

}  // namespace

std::span<const ControlRow> Controls() {
    return kControls;
}

}  // namespace wavo_properties

namespace wp = wavo_properties;

namespace {

/// Widths, characters.
constexpr int kShortEdit = 24;
constexpr int kPathEdit = 45;
constexpr int kBrowseButton = 6;

/// Settings keep one byte per character. A text that has others becomes one that is no character.
std::string ToBytes(const QString& text) {
    const bool single_bytes =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFFU; });
    return (single_bytes ? text.toLatin1() : text.toUtf8()).toStdString();
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

CWavoProperties::CWavoProperties(ViewSettings& settings, const Prompts& prompts, QWidget* parent)
    : TableDialog(QStringLiteral("Properties"), wp::Controls(), parent),
      m_prompts(prompts),
      m_settings(settings),
      m_edited(settings) {
    LayOut();
    OnClick(wp::kBackground, &CWavoProperties::SelectBackground);
    OnClick(wp::kSelectFont, &CWavoProperties::SelectFont);
    OnClick(wp::kSelectDataFile, &CWavoProperties::SelectDataFile);
    OnClick(wp::kDefaultValues, &CWavoProperties::SetDefaultValues);
    ShowSettings();
}

void CWavoProperties::LayOut() {
    auto* const display = new QGroupBox(QStringLiteral("graphs"), this);
    display->setAccessibleDescription(QStringLiteral("How the graphs look"));
    auto* const values = new QGroupBox(QStringLiteral("save values (data export)"), this);
    values->setAccessibleDescription(QStringLiteral("How values are written to a file"));
    auto* const display_form = new QFormLayout(display);
    auto* const values_form = new QFormLayout(values);
    FillDisplayPart(*display_form);
    FillExportPart(*values_form);
    AlignForms(*display_form, *values_form);

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(&Control(wp::kDefaultValues));
    buttons->addStretch();
    buttons->addWidget(Buttons());

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(display);
    layout->addWidget(values);
    layout->addStretch();
    layout->addLayout(buttons);
}

void CWavoProperties::FillDisplayPart(QFormLayout& form) {
    Control(wp::kBackground).setFocusPolicy(Qt::StrongFocus);
    auto* const font_label = new QLabel(QStringLiteral("graphs font:"));
    font_label->setBuddy(&Control(wp::kSelectFont));
    m_font_name = new ElidedLabel;
    m_font_name->setObjectName(QStringLiteral("font_name"));
    m_font_name->setTextFormat(Qt::PlainText);
    m_font_name->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_font_name->setAccessibleDescription(QStringLiteral("The font of all texts of the graphs"));
    auto* const font = new QHBoxLayout;
    font->addWidget(&Control(wp::kSelectFont));
    font->addWidget(m_font_name, 1);

    form.addRow(LabelOf(wp::kBackground), &Control(wp::kBackground));
    form.addRow(font_label, font);
    for (const int id : {wp::kScaleLinesX, wp::kScaleLinesY}) {
        form.addRow(LabelOf(id), &ShortEdit(id, kShortEdit));
    }
    form.addRow(&Control(wp::kShowGraphEditor));
}

void CWavoProperties::FillExportPart(QFormLayout& form) {
    for (const int id : {wp::kSeparator, wp::kDecimalPoint, wp::kEndOfLine}) {
        form.addRow(LabelOf(id), &ShortEdit(id, kShortEdit));
    }
    QWidget& select = Control(wp::kSelectDataFile);
    select.setFixedWidth(select.fontMetrics().averageCharWidth() * kBrowseButton);
    auto* const line = new QHBoxLayout;
    line->addWidget(&WideEdit(wp::kDataFile, kPathEdit), 1);
    line->addWidget(&select);
    form.addRow(LabelOf(wp::kDataFile), line);
}

void CWavoProperties::ShowSettings() {
    SetEditText(wp::kScaleLinesX, QString::number(m_edited.scale_lines_x));
    SetEditText(wp::kScaleLinesY, QString::number(m_edited.scale_lines_y));
    Control<QCheckBox>(wp::kShowGraphEditor).setChecked(m_edited.show_graph_editor);
    const ExportTexts texts = FormatExportSettings(m_edited.export_settings);
    SetEditText(wp::kSeparator, FromBytes(texts.separator));
    SetEditText(wp::kDecimalPoint, FromBytes(texts.decimal_point));
    SetEditText(wp::kEndOfLine, FromBytes(texts.end_of_line));
    SetEditText(wp::kDataFile, QString::fromStdString(texts.data_file));
    ShowFont();
    Control<ColorField>(wp::kBackground).SetColor(ToQColor(m_edited.background));
}

void CWavoProperties::ShowFont() {
    const FontDescription& font = m_edited.font;
    QString name = QString::fromStdString(font.face);
    if (font.face != kSystemFace && font.height != 0) {
        name += QStringLiteral(", %1 px").arg(std::abs(std::int64_t{font.height}));
    }
    m_font_name->setText(name);
}

void CWavoProperties::SelectBackground() {
    if (const auto color = m_prompts.color(this, Qt::black)) {
        m_edited.background = ToColorRef(*color);
        Control<ColorField>(wp::kBackground).SetColor(*color);
    }
}

void CWavoProperties::SelectFont() {
    const QFont present = MakeFont(m_edited.font);
    const auto font = m_prompts.font(this, present);
    // A font that was only confirmed keeps its description, the name "System" above all.
    if (font && *font != present) {
        m_edited.font = DescribeFont(*font);
        ShowFont();
    }
}

void CWavoProperties::SelectDataFile() {
    const auto path = m_prompts.save_file(
        this, {QStringLiteral("Save As"), EditText(wp::kDataFile), QStringLiteral("txt"),
               QStringLiteral("Data Files (*.txt)|*.txt|All Files (*.*)|*.*||")});
    if (path) {
        SetEditText(wp::kDataFile, *path);
    }
}

void CWavoProperties::SetDefaultValues() {
    const ViewSettings before = m_edited;
    m_edited = DefaultViewSettings();
    // These are not settings of the dialog.
    m_edited.trace_level = before.trace_level;
    m_edited.line_styles = before.line_styles;
    ShowSettings();
}

void CWavoProperties::accept() {
    m_edited.scale_lines_x =
        ParseScaleLines(EditText(wp::kScaleLinesX).toStdString(), kDefaultScaleLinesX);
    m_edited.scale_lines_y =
        ParseScaleLines(EditText(wp::kScaleLinesY).toStdString(), kDefaultScaleLinesY);
    m_edited.show_graph_editor = Control<QCheckBox>(wp::kShowGraphEditor).isChecked();
    m_edited.export_settings = ParseExportTexts(
        {ToBytes(EditText(wp::kSeparator)), ToBytes(EditText(wp::kDecimalPoint)),
         ToBytes(EditText(wp::kEndOfLine)), EditText(wp::kDataFile).toStdString()});
    m_settings = m_edited;
    QDialog::accept();
}

}  // namespace wavo
