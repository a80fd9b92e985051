#include "ui/shell/first_page.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <initializer_list>

#include "ui/controls/control_table.h"
#include "ui/controls/flow_layout.h"

namespace wavo {

namespace {

constexpr int kWidestText = 80;  // in average characters
constexpr double kTitleSize = 1.4;

constexpr char kWaits[] =
    "Wavo shows what a master sends, the program that is connected to the machine: the master "
    "process (Dorvane).";
constexpr char kConnectsItself[] =
    " The viewer connects by itself as soon as there is one. Machine Data > Connect Machine data "
    "looks for it at once.";
constexpr char kIsConnected[] =
    " Once there is one, connect to it with Machine Data > Connect Machine data.";

QLabel* MakeText(QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    return label;
}

}  // namespace

FirstPage::FirstPage(const Offers& offers, QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    // What is pressed here does not concern the graphs below.
    setAttribute(Qt::WA_NoMousePropagation);
    SetAccessibleTexts(*this, QStringLiteral("Waiting for values"),
                       QStringLiteral("Why no graphs are shown, and what can be done"));
    auto* const content = new QWidget;
    auto* const title = MakeText(content);
    m_waits = MakeText(content);
    m_link = MakeText(content);
    QFont font = title->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * kTitleSize);
    title->setFont(font);
    title->setText(accessibleName());

    auto* const column = new QVBoxLayout;
    column->setSpacing(fontMetrics().height() / 2);
    column->addStretch(1);
    for (QWidget* const part :
         std::initializer_list<QWidget*>{title, m_waits, m_link, MakeButtons(offers)}) {
        Narrow(*part);
        column->addWidget(part);
    }
    column->addStretch(2);
    auto* const row = new QHBoxLayout(content);
    row->addStretch(1);
    row->addLayout(column, 1000);
    row->addStretch(1);
    setWidget(content);
}

void FirstPage::Narrow(QWidget& widget) const {
    widget.setMaximumWidth(kWidestText * fontMetrics().averageCharWidth());
}

QWidget* FirstPage::MakeButtons(const Offers& offers) {
    const struct {
        const char* text;
        const char* tip;
        const std::function<void()>& act;
    } rows[] = {
        {"Open Recording...", "Look at a recording or a table of values; no master is needed",
         offers.open_recording},
        {"Play the Demo",
         "Show a recorded circle as if a machine sent it, until the viewer is closed or the demo "
         "is ended in the status bar",
         offers.play_demo},
        {"Manual", "What Wavo is, and the first five minutes with it", offers.open_manual},
    };
    auto* const buttons = new QWidget;
    auto* const layout = new FlowLayout(buttons);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const auto& row : rows) {
        if (!row.act) {
            continue;
        }
        auto* const button = new QPushButton(QString::fromUtf8(row.text), buttons);
        button->setAutoDefault(true);  // Enter presses it, too
        button->setToolTip(QString::fromUtf8(row.tip));
        SetAccessibleTexts(*button, button->text(), button->toolTip());
        connect(button, &QPushButton::clicked, this, row.act);
        layout->addWidget(button);
    }
    return buttons;
}

void FirstPage::Tell(const QString& link, bool connects_itself) {
    m_waits->setText(QLatin1String(kWaits) +
                     QLatin1String(connects_itself ? kConnectsItself : kIsConnected));
    m_link->setText(QStringLiteral("The link now: %1.").arg(link));
    m_link->setVisible(!link.isEmpty());
}

int FirstPage::NeededHeight(int width) const {
    return widget()->layout()->totalHeightForWidth(width);
}

QWidget* FirstPage::FirstButton() const {
    return widget()->findChild<QPushButton*>();
}

}  // namespace wavo
