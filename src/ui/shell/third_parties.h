// What others have written and Wavo is linked with or comes with: licences and notices.
#pragma once

#include <QDialog>

class QTextBrowser;
class QUrl;

namespace wavo {

/// The text of docs/third-party.md, as of this build.
QString ThirdParties();

class ThirdPartiesDialog : public QDialog {
 public:
    explicit ThirdPartiesDialog(QWidget* parent);

 private:
    /// A link to a heading leads there, others to where the desktop shows them.
    void Follow(const QUrl& link);

    QTextBrowser* m_text;  // child
};

}  // namespace wavo
