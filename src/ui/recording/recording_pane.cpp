#include "ui/recording/recording_pane.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStringList>

namespace wavo {

namespace {

using recorder::Notice;
using recorder::RecorderState;

constexpr QColor kRed(0xd0, 0x20, 0x20);

QString Text(const std::string& text) {
    return QString::fromStdString(text);
}

QString ProgressText(const Notice& notice) {
    switch (notice.state) {
        case RecorderState::kWaitsForMaster:
            return QStringLiteral("waiting for the master");
        case RecorderState::kWaitsForTrigger:
            return QStringLiteral("waiting for the trigger");
        default:
            break;
    }
    QString text =
        Text(recorder::TimeText(notice.seconds) + "  " + recorder::SizeText(notice.bytes));
    if (notice.lost > 0) {
        text += QStringLiteral("  %1 lost").arg(notice.lost);
    }
    return text;
}

QString Tip(const Notice& notice) {
    return QStringLiteral("%1: %2 lines, %3 lost")
        .arg(Text(notice.file))
        .arg(notice.lines)
        .arg(notice.lost);
}

}  // namespace

RecordingPane::RecordingPane(QWidget* parent) : RoomyLabel(parent) {
    setMargin(2);
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setContentsMargins(fontMetrics().height(), 0, 0, 0);  // the mark
    SetWidestText(QStringLiteral("00:00:00  0000.0 MB"));
    setObjectName(QStringLiteral("recording_pane"));
    setAccessibleName(QStringLiteral("Recording"));
    setAccessibleDescription(QStringLiteral("Time and size of the recording that runs"));
    hide();
}

void RecordingPane::Show(const std::vector<SeenRecorder>& running) {
    if (running.size() > m_running.size()) {
        m_remembered.clear();
    }
    m_running = running;
    Renew();
}

void RecordingPane::Remember(const SeenRecorder& ended) {
    const Notice& notice = ended.notice;
    if (notice.state == RecorderState::kFailed) {
        m_remembered = QStringLiteral("recording failed");
        m_remembered_tip = Text(notice.file + ": " + notice.reason);
    } else if (notice.lost > 0) {
        m_remembered = QStringLiteral("recorded, %1 lost").arg(notice.lost);
        m_remembered_tip = Tip(notice);
    }
    Renew();
}

void RecordingPane::Renew() {
    QStringList texts;
    QStringList tips;
    m_mark = Mark::kCross;
    if (!m_running.empty()) {
        const Notice& first = m_running.front().notice;
        m_mark = first.state == RecorderState::kRecords ? Mark::kFull : Mark::kHollow;
        texts << ProgressText(first);
    }
    if (m_running.size() > 1) {
        texts << QStringLiteral("(+%1)").arg(m_running.size() - 1);
    }
    for (const SeenRecorder& one : m_running) {
        tips << Tip(one.notice);
    }
    if (!m_remembered.isEmpty()) {
        texts << m_remembered;
        tips << m_remembered_tip;
    }
    setText(texts.join(u' '));
    setToolTip(tips.join(u'\n'));
    setAccessibleName(texts.isEmpty() ? QStringLiteral("Recording")
                                      : QStringLiteral("Recording: ") + text());
    setVisible(!texts.isEmpty());
    update();
}

void RecordingPane::paintEvent(QPaintEvent* event) {
    RoomyLabel::paintEvent(event);
    const double side = fontMetrics().ascent() * 0.8;
    const QRectF square(margin() + 1.0, (height() - side) / 2.0, side, side);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(kRed, 1.6));
    if (m_mark == Mark::kCross) {
        const QRectF inner = square.adjusted(1, 1, -1, -1);
        painter.drawLine(inner.topLeft(), inner.bottomRight());
        painter.drawLine(inner.bottomLeft(), inner.topRight());
        return;
    }
    painter.setBrush(m_mark == Mark::kFull ? QBrush(kRed) : QBrush(Qt::NoBrush));
    painter.drawEllipse(square);
}

void RecordingPane::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        m_remembered.clear();
        Renew();
    } else {
        RoomyLabel::mousePressEvent(event);
    }
}

}  // namespace wavo
