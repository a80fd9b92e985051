#include "ui/shell/third_parties.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTextBlock>
#include <QTextBrowser>
#include <QUrl>
#include <QVBoxLayout>

#include "ui/controls/control_table.h"

namespace wavo {

namespace {

constexpr int kColumns = 100;  // average characters
constexpr int kRows = 34;

/// What links call a heading: "Another Qt on Windows" is "another-qt-on-windows".
QString AnchorOf(const QString& heading) {
    return heading.toLower().replace(QLatin1Char(' '), QLatin1Char('-'));
}

}  // namespace

ThirdPartiesDialog::ThirdPartiesDialog(QWidget* parent)
    : QDialog(parent), m_text(new QTextBrowser(this)) {
    setWindowTitle(QStringLiteral("Licences and Notices"));
    SetAccessibleTexts(*m_text, windowTitle(),
                       QStringLiteral("What others have written and Wavo is linked with or comes "
                                      "with; can be marked and copied"));
    m_text->setOpenLinks(false);
    // Tables become as narrow as it takes, but for a pixel of the margin.
    m_text->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_text->setMarkdown(ThirdParties());
    connect(m_text, &QTextBrowser::anchorClicked, this, &ThirdPartiesDialog::Follow);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton& close = *buttons->button(QDialogButtonBox::Close);
    SetAccessibleTexts(close, close.text(), QStringLiteral("Close this window"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    layout->addWidget(buttons);
    resize(kColumns * fontMetrics().averageCharWidth(), kRows * fontMetrics().lineSpacing());
    m_text->setFocus();
}

void ThirdPartiesDialog::Follow(const QUrl& link) {
    if (!link.isRelative()) {
        QDesktopServices::openUrl(link);
        return;
    }
    for (QTextBlock block = m_text->document()->begin(); block.isValid(); block = block.next()) {
        if (block.blockFormat().headingLevel() > 0 && AnchorOf(block.text()) == link.fragment()) {
            m_text->moveCursor(QTextCursor::End);  // so that the heading comes to the top
            m_text->setTextCursor(QTextCursor(block));
        }
    }
}

}  // namespace wavo
