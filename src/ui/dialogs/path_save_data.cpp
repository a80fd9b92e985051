#include "ui/dialogs/path_save_data.h"

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <algorithm>
#include <optional>

#include "ui/controls/controls.h"
#include "ui/controls/elided_label.h"
#include "ui/controls/line_edits.h"
#include "ui/dialogs/file_dialogs.h"
#include "ui/dialogs/message_boxes.h"
#include "ui/dialogs/report_texts.h"

namespace wavo {

namespace {

/// Characters of a path that can be read without scrolling.
constexpr int kPathCharacters = 56;
/// Width of the button "..." in characters.
constexpr int kBrowseCharacters = 6;

const PathSaveDataControl& ControlOf(PathSaveDataId id) {
    return *std::find_if(kPathSaveDataControls.begin(), kPathSaveDataControls.end(),
                         [id](const PathSaveDataControl& control) { return control.id == id; });
}

void InitControl(PathSaveDataId id, QWidget* control) {
    SetControlId(*control, static_cast<int>(id));
    control->setToolTip(QString::fromLatin1(ControlOf(id).tooltip));
}

template <typename Widget>
Widget* MakeControl(PathSaveDataId id, QWidget* parent) {
    auto* const control = new Widget(parent);
    InitControl(id, control);
    return control;
}

void InitButton(PathSaveDataId id, QPushButton* button) {
    InitControl(id, button);
    button->setText(QString::fromLatin1(ControlOf(id).text));
}

QLabel* MakeLabel(PathSaveDataId id, QWidget* control) {
    auto* const label =
        new QLabel(QString::fromLatin1(ControlOf(id).text), control->parentWidget());
    label->setBuddy(control);
    return label;
}

QString Joined(const std::vector<std::string>& names) {
    QStringList list;
    for (const std::string& name : names) {
        list.append(QString::fromStdString(name));
    }
    return list.join(u',');
}

/// Asks whether a file may be replaced.
bool MayReplace(QWidget* parent, const std::string& path) {
    return ShowBox(parent, {dialog_texts::FileExistsBox(path), dialog_texts::kFileExistsCaption,
                            BoxIcon::kExclamation, BoxButtons::kOkCancel}) == BoxAnswer::kOk;
}

}  // namespace

PathSaveData::PathSaveData(const std::string& path, const std::vector<std::string>& axis_names,
                           QWidget* parent)
    : QDialog(parent), m_path(path) {
    setWindowTitle(QStringLiteral("Save Values"));
    auto* const axes = MakeControl<ElidedLabel>(PathSaveDataId::kAxes, this);
    axes->setTextFormat(Qt::PlainText);
    axes->setText(Joined(axis_names));
    axes->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_path_edit = MakeControl<QLineEdit>(PathSaveDataId::kPath, this);
    m_path_edit->setText(QString::fromStdString(path));
    m_path_edit->setMinimumWidth(fontMetrics().averageCharWidth() * kPathCharacters);
    LayOut();
    KeepOneLineInEdits(*this);
    m_path_edit->setFocus();
}

void PathSaveData::LayOut() {
    auto* const axes = FindControl(*this, static_cast<int>(PathSaveDataId::kAxes));
    auto* const browse = new QPushButton(this);
    InitButton(PathSaveDataId::kBrowse, browse);
    browse->setAutoDefault(false);
    browse->setFixedWidth(browse->fontMetrics().averageCharWidth() * kBrowseCharacters);
    connect(browse, &QPushButton::clicked, this, [this] { ChoosePath(); });
    auto* const buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton* const ok = buttons->button(QDialogButtonBox::Ok);
    QPushButton* const cancel = buttons->button(QDialogButtonBox::Cancel);
    InitButton(PathSaveDataId::kOk, ok);
    InitButton(PathSaveDataId::kCancel, cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* const grid = new QGridLayout(this);
    grid->addWidget(MakeLabel(PathSaveDataId::kAxes, axes), 0, 0);
    grid->addWidget(axes, 0, 1, 1, 2);
    grid->addWidget(MakeLabel(PathSaveDataId::kPath, m_path_edit), 1, 0);
    grid->addWidget(m_path_edit, 1, 1);
    grid->addWidget(browse, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(2, 1);
    grid->addWidget(buttons, 3, 0, 1, 3);
    setTabOrder(m_path_edit, browse);
    setTabOrder(browse, ok);
    setTabOrder(ok, cancel);
}

void PathSaveData::accept() {
    m_path = m_path_edit->text().toStdString();
    QDialog::accept();
}

void PathSaveData::ChoosePath() {
    const std::optional<std::string> path =
        AskForFile(this, {"txt",
                          m_path_edit->text().toStdString(),
                          {{"Data Files", "*.txt"}, {"All Files", "*.*"}}});
    if (!path.has_value()) {
        return;
    }
    const QString text = QString::fromStdString(*path);
    if (!QFileInfo::exists(text) || MayReplace(this, *path)) {
        m_path_edit->setText(text);
    }
}

}  // namespace wavo
