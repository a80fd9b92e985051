#include "ui/dialogs/path_save_data.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <array>
#include <optional>

#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

constexpr int PathNumber(PathSaveDataId id) {
    return static_cast<int>(id);
}

constexpr std::array<ControlRow, 5> kPathSaveDataRows{{
    {PathNumber(PathSaveDataId::kAxes), ControlKind::kElidedStatic, "axis:", ""},
    {PathNumber(PathSaveDataId::kPath), ControlKind::kEdit, "path for data file is:",
     "File that the values are written to, one column per axis and one line per cycle of the "
     "master"},
    {PathNumber(PathSaveDataId::kBrowse), ControlKind::kButton, "...", "Choose the file"},
    {PathNumber(PathSaveDataId::kOk), ControlKind::kOk, "OK",
     "Write the values of these axes to the file"},
    {PathNumber(PathSaveDataId::kCancel), ControlKind::kCancel, "Cancel", "Write nothing"},
}};

/// Characters of a path that can be read without scrolling.
constexpr int kPathCharacters = 56;
/// Width of the button "..." in characters.
constexpr int kBrowseCharacters = 6;

QString Joined(const std::vector<std::string>& names) {
    QStringList list;
    for (const std::string& name : names) {
        list.append(QString::fromStdString(name));
    }
    return list.join(u',');
}

}  // namespace

std::span<const ControlRow> PathSaveDataControls() {
    return kPathSaveDataRows;
}

PathSaveData::PathSaveData(const std::string& path, const std::vector<std::string>& axis_names,
                           const Prompts& prompts, QWidget* parent)
    : TableDialog(QStringLiteral("Save Values"), kPathSaveDataRows, parent),
      m_prompts(prompts),
      m_path(path) {
    auto& axes = Control<QLabel>(PathNumber(PathSaveDataId::kAxes));
    axes.setText(Joined(axis_names));
    // Its tool tip is for what does not fit.
    axes.setAccessibleDescription(QStringLiteral("The axes whose values are written"));
    SetEditText(PathNumber(PathSaveDataId::kPath), QString::fromStdString(path));
    LayOut();
    OnClick(PathNumber(PathSaveDataId::kBrowse), &PathSaveData::ChoosePath);
    Control(PathNumber(PathSaveDataId::kPath)).setFocus();
}

void PathSaveData::LayOut() {
    QWidget& browse = Control(PathNumber(PathSaveDataId::kBrowse));
    browse.setFixedWidth(browse.fontMetrics().averageCharWidth() * kBrowseCharacters);
    auto* const grid = new QGridLayout(this);
    grid->addWidget(LabelOf(PathNumber(PathSaveDataId::kAxes)), 0, 0);
    grid->addWidget(&Control(PathNumber(PathSaveDataId::kAxes)), 0, 1, 1, 2);
    grid->addWidget(LabelOf(PathNumber(PathSaveDataId::kPath)), 1, 0);
    grid->addWidget(&WideEdit(PathNumber(PathSaveDataId::kPath), kPathCharacters), 1, 1);
    grid->addWidget(&browse, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(2, 1);
    grid->addWidget(Buttons(), 3, 0, 1, 3);
}

void PathSaveData::accept() {
    m_path = EditText(PathNumber(PathSaveDataId::kPath)).toStdString();
    QDialog::accept();
}

void PathSaveData::ChoosePath() {
    const std::optional<QString> chosen = m_prompts.save_file(
        this, {QString(), EditText(PathNumber(PathSaveDataId::kPath)), QStringLiteral("txt"),
               QStringLiteral("Data Files (*.txt)|*.txt|All Files (*.*)|*.*||")});
    if (!chosen.has_value()) {
        return;
    }
    if (!QFileInfo::exists(*chosen) || MayReplaceFile(m_prompts, this, chosen->toStdString())) {
        SetEditText(PathNumber(PathSaveDataId::kPath), *chosen);
    }
}

}  // namespace wavo
