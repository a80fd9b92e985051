#include "ui/dialogs/export_part.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QVBoxLayout>
#include <array>

#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

using recording::LineSpan;
using tables::PartFormat;

constexpr int PartNumber(ExportPartId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 8> kExportPartRows{{
    {PartNumber(ExportPartId::kVisible), ControlKind::kRadio, "the &visible part",
     "What the graphs show of the recording"},
    {PartNumber(ExportPartId::kMarked), ControlKind::kRadio, "the &marked part",
     "From cursor A to cursor B, both included"},
    {PartNumber(ExportPartId::kEverything), ControlKind::kRadio, "&everything",
     "The whole recording"},
    {PartNumber(ExportPartId::kFormat), ControlKind::kCombo, "as:",
     "A recording keeps everything; a table has the time in its first column, and is written with "
     "the separator and decimal point of the properties"},
    {PartNumber(ExportPartId::kPath), ControlKind::kEdit,
     "file:", "File that the part is written to"},
    {PartNumber(ExportPartId::kBrowse), ControlKind::kButton, "...", "Choose the file"},
    {PartNumber(ExportPartId::kOk), ControlKind::kOk, "OK", "Write the part to the file"},
    {PartNumber(ExportPartId::kCancel), ControlKind::kCancel, "Cancel", "Write nothing"},
}};

struct FormatRow {
    PartFormat format;
    const char* text;
    const char* extension;
    const char* filters;
};

/// In the order of the list; an extension that ends with another one comes after it.
constexpr std::array<FormatRow, 3> kFormats{{
    {PartFormat::kRecording, "a recording (.mcap)", ".mcap", "Recordings|*.mcap|All Files|*.*|"},
    {PartFormat::kTable, "a table (.csv)", ".csv", "Tables|*.csv|All Files|*.*|"},
    {PartFormat::kPackedTable, "a compressed table (.csv.gz)", ".csv.gz",
     "Compressed Tables|*.csv.gz|All Files|*.*|"},
}};

/// Characters of a path that can be read without scrolling.
constexpr int kPartPathCharacters = 56;
/// Width of the button "..." in characters.
constexpr int kPartBrowseCharacters = 6;

const FormatRow& RowOf(PartFormat format) {
    return kFormats[static_cast<std::size_t>(format)];
}

/// "0.5 s to 2 s, 1500 lines".
QString StretchText(const LineSpan& stretch, double cycle_time) {
    const auto seconds = [cycle_time](std::uint64_t line) {
        return QString::number(static_cast<double>(line) * cycle_time, 'g', 10);
    };
    const std::uint64_t lines = stretch.end - stretch.first;
    return QStringLiteral("%1 s to %2 s, %3 %4")
        .arg(seconds(stretch.first), seconds(stretch.end))
        .arg(lines)
        .arg(lines == 1 ? QStringLiteral("line") : QStringLiteral("lines"));
}

}  // namespace

std::span<const ControlRow> ExportPartControls() {
    return kExportPartRows;
}

ExportPart::ExportPart(const PartStretches& stretches, const tables::PartFile& file,
                       const Prompts& prompts, QWidget* parent)
    : TableDialog(QStringLiteral("Export Part"), kExportPartRows, parent),
      m_stretches(stretches),
      m_initial(file),
      m_prompts(prompts) {
    auto& format = Control<QComboBox>(PartNumber(ExportPartId::kFormat));
    for (const FormatRow& row : kFormats) {
        format.addItem(QString::fromLatin1(row.text));
    }
    format.setCurrentIndex(static_cast<int>(file.format));
    SetEditText(PartNumber(ExportPartId::kPath), QString::fromStdString(file.path));
    ShowStretches();
    LayOut();
    connect(&format, &QComboBox::currentIndexChanged, this, [this] { ChangeExtension(); });
    connect(&Control<QLineEdit>(PartNumber(ExportPartId::kPath)), &QLineEdit::textChanged, this,
            [this] { Enable(); });
    OnClick(PartNumber(ExportPartId::kBrowse), &ExportPart::ChoosePath);
    ChangeExtension();
    Enable();
}

void ExportPart::ShowStretches() {
    const auto show = [this](ExportPartId id, const std::optional<LineSpan>& stretch) {
        auto& radio = Control<QRadioButton>(PartNumber(id));
        radio.setEnabled(stretch.has_value());
        if (stretch) {
            const QString text =
                radio.text() + QStringLiteral(": ") + StretchText(*stretch, m_stretches.cycle_time);
            radio.setText(text);
            SetAccessibleTexts(radio, text, radio.toolTip());
        }
    };
    show(ExportPartId::kVisible, m_stretches.visible);
    show(ExportPartId::kMarked, m_stretches.marked);
    show(ExportPartId::kEverything, m_stretches.everything);
    const ExportPartId chosen = m_stretches.marked    ? ExportPartId::kMarked
                                : m_stretches.visible ? ExportPartId::kVisible
                                                      : ExportPartId::kEverything;
    Control<QRadioButton>(PartNumber(chosen)).setChecked(true);
}

void ExportPart::LayOut() {
    auto* const part = new QGroupBox(QStringLiteral("part"), this);
    part->setAccessibleDescription(QStringLiteral("Which lines of the recording are written"));
    auto* const parts = new QVBoxLayout(part);
    for (const ExportPartId id :
         {ExportPartId::kVisible, ExportPartId::kMarked, ExportPartId::kEverything}) {
        parts->addWidget(&Control(PartNumber(id)));
    }
    QWidget& browse = Control(PartNumber(ExportPartId::kBrowse));
    browse.setFixedWidth(browse.fontMetrics().averageCharWidth() * kPartBrowseCharacters);
    auto* const grid = new QGridLayout(this);
    grid->addWidget(part, 0, 0, 1, 3);
    grid->addWidget(LabelOf(PartNumber(ExportPartId::kFormat)), 1, 0);
    grid->addWidget(&Control(PartNumber(ExportPartId::kFormat)), 1, 1, 1, 2);
    grid->addWidget(LabelOf(PartNumber(ExportPartId::kPath)), 2, 0);
    grid->addWidget(&WideEdit(PartNumber(ExportPartId::kPath), kPartPathCharacters), 2, 1);
    grid->addWidget(&browse, 2, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(3, 1);
    grid->addWidget(Buttons(), 4, 0, 1, 3);
}

PartFormat ExportPart::Format() const {
    const int index = Control<QComboBox>(PartNumber(ExportPartId::kFormat)).currentIndex();
    return kFormats[static_cast<std::size_t>(index)].format;
}

void ExportPart::ChangeExtension() {
    QString path = EditText(PartNumber(ExportPartId::kPath));
    for (const FormatRow& row : kFormats) {
        const QString extension = QString::fromLatin1(row.extension);
        if (path.endsWith(extension, Qt::CaseInsensitive) && path.size() > extension.size()) {
            path.chop(extension.size());
            SetEditText(PartNumber(ExportPartId::kPath),
                        path + QString::fromLatin1(RowOf(Format()).extension));
            return;
        }
    }
}

void ExportPart::ChoosePath() {
    const FormatRow& row = RowOf(Format());
    const std::optional<QString> chosen = m_prompts.save_file(
        this, {QString(), EditText(PartNumber(ExportPartId::kPath)),
               QString::fromLatin1(row.extension).mid(1), QString::fromLatin1(row.filters)});
    if (chosen) {
        SetEditText(PartNumber(ExportPartId::kPath), *chosen);
    }
}

void ExportPart::Enable() {
    Control(PartNumber(ExportPartId::kOk))
        .setEnabled(!EditText(PartNumber(ExportPartId::kPath)).trimmed().isEmpty());
}

LineSpan ExportPart::Part() const {
    if (m_stretches.visible &&
        Control<QRadioButton>(PartNumber(ExportPartId::kVisible)).isChecked()) {
        return *m_stretches.visible;
    }
    if (m_stretches.marked &&
        Control<QRadioButton>(PartNumber(ExportPartId::kMarked)).isChecked()) {
        return *m_stretches.marked;
    }
    return m_stretches.everything;
}

tables::PartFile ExportPart::File() const {
    tables::PartFile file = m_initial;
    file.path = EditText(PartNumber(ExportPartId::kPath)).toStdString();
    file.format = Format();
    return file;
}

void ExportPart::accept() {
    const QString path = EditText(PartNumber(ExportPartId::kPath));
    if (!QFileInfo::exists(path) || MayReplaceFile(m_prompts, this, path.toStdString())) {
        QDialog::accept();
    }
}

}  // namespace wavo
