#include "ui/controls/line_edits.h"

#include <QLineEdit>
#include <QValidator>
#include <QWidget>

namespace wavo {

namespace {

bool IsLineEnd(QChar c) {
    return (c >= u'\n' && c <= u'\r') || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator || c == QChar(0x0085);
}

/// Accepts every text, as one line.
class OneLine : public QValidator {
 public:
    using QValidator::QValidator;

    State validate(QString& text, int& position) const override {
        for (qsizetype i = 0; i < text.size(); ++i) {
            if (!IsLineEnd(text[i])) {
                continue;
            }
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n') {
                text.remove(i, 1);
                position -= position > i ? 1 : 0;
            }
            text[i] = u' ';
        }
        return Acceptable;
    }
};

}  // namespace

void KeepOneLine(QLineEdit& edit) {
    edit.setValidator(new OneLine(&edit));
    edit.setText(edit.text());  // what is there already is looked at too
}

void KeepOneLineInEdits(const QWidget& window) {
    for (QLineEdit* const edit : window.findChildren<QLineEdit*>()) {
        if (edit->validator() == nullptr) {
            KeepOneLine(*edit);
        }
    }
}

}  // namespace wavo
