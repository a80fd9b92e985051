// Loaded into a program before everything else (LD_PRELOAD): writes the time at which its first
// frame was painted to the standard output, in nanoseconds of the steady clock.
//
// WAVO_BENCH_WIDGET names the class of the widget that is meant.
#include <QByteArray>
#include <QCoreApplication>
#include <QEvent>
#include <QObject>
#include <chrono>
#include <cstdio>

namespace {

class FirstFrame : public QObject {
 public:
    FirstFrame() : m_widget(qgetenv("WAVO_BENCH_WIDGET")) {}

    bool eventFilter(QObject* object, QEvent* event) override {
        if (!m_seen && event->type() == QEvent::Paint && object->inherits(m_widget.constData())) {
            m_seen = true;
            // When the loop goes on, the frame has been painted and given to the screen.
            QMetaObject::invokeMethod(
                this,
                [] {
                    std::printf("first frame %lld\n",
                                static_cast<long long>(
                                    std::chrono::steady_clock::now().time_since_epoch().count()));
                    std::fflush(stdout);
                },
                Qt::QueuedConnection);
        }
        return false;
    }

 private:
    QByteArray m_widget;
    bool m_seen = false;
};

void Watch() {
    static FirstFrame first_frame;
    QCoreApplication::instance()->installEventFilter(&first_frame);
}

}  // namespace

Q_COREAPP_STARTUP_FUNCTION(Watch)
