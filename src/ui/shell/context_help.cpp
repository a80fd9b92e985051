#include "ui/shell/context_help.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QUrl>
#include <QWidget>

#include "ui/prompts.h"
#include "ui/shell/help_topics.h"

namespace wavo {

namespace {

/// From the folder of the program: below the prefix, beside the program, in a tree that is built.
constexpr const char* kFolders[] = {"../share/doc/wavo/manual", "manual", "../../../../../manual"};

/// The page that leads to a topic. What opens addresses often loses what stands behind "#".
QString PageOf(const QString& folder, const QString& topic) {
    QString name = topic == QLatin1String("README") ? QStringLiteral("index") : topic;
    return QDir(folder).filePath(QStringLiteral("go/%1.html").arg(name.replace(u'#', u'.')));
}

}  // namespace

QString ManualFolder() {
    const QDir program(QCoreApplication::applicationDirPath());
    for (const char* const folder : kFolders) {
        const QString path = QDir::cleanPath(program.filePath(QString::fromLatin1(folder)));
        if (QFileInfo::exists(path + QStringLiteral("/index.html"))) {
            return path;
        }
    }
    return {};
}

ContextHelp::ContextHelp(QWidget& frame, const Prompts& prompts)
    : QObject(&frame), m_frame(frame), m_prompts(prompts), m_folder(ManualFolder()) {
    qApp->installEventFilter(this);
}

void ContextHelp::Open() {
    for (QWidget* const widget : {QApplication::activePopupWidget(), QApplication::focusWidget(),
                                  m_frame.focusWidget(), &m_frame}) {
        if (widget != nullptr) {
            OpenFor(*widget);
            return;
        }
    }
}

void ContextHelp::OpenFor(QWidget& widget) {
    if (m_folder.isEmpty()) {
        m_prompts.box(widget.window(),
                      {"The manual is not installed.\nIt comes with the packages of Wavo; where "
                       "Wavo was built, ./package --docs makes it.",
                       "Manual", BoxIcon::kInformation, BoxButtons::kOk});
        return;
    }
    const QString page = PageOf(m_folder, HelpTopic(widget));
    if (!m_prompts.open_page(widget.window(), QUrl::fromLocalFile(page))) {
        m_prompts.box(widget.window(), {"No program was found that shows the manual:\n" +
                                            QDir::toNativeSeparators(page).toStdString(),
                                        "Manual", BoxIcon::kExclamation, BoxButtons::kOk});
    }
}

bool ContextHelp::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress || !watched->isWidgetType()) {
        return false;
    }
    const auto& key = *static_cast<QKeyEvent*>(event);
    auto& widget = *static_cast<QWidget*>(watched);
    if (key.key() != Qt::Key_F1 || key.modifiers() != Qt::NoModifier ||
        widget.window() == &m_frame) {
        return false;
    }
    if (!key.isAutoRepeat()) {
        OpenFor(widget);
    }
    return true;
}

}  // namespace wavo
