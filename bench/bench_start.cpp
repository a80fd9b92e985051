// How long a viewer takes to appear, and what it costs while nothing happens.
//
// first_picture: from the start of the program to the first frame that it has painted, ns. `wavo`
// finds a master that publishes; the rival is the smallest window of QCustomPlot with one curve;
// the limit is a program of Qt that asks for its version.
// idle: processor time that a viewer takes in a second in which its master publishes no line, ns.
// The rival is the same window, the limit nothing.
//
// Both without a screen (offscreen).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

#include "bench/bench_common.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kPatience = 20000;  // ms
constexpr int kFirstPictures = 10;
constexpr std::chrono::seconds kIdle{2};

QProcessEnvironment Environment(const QString& widget, const QString& home) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("default.warning=false"));
    environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(WAVO_FIRST_FRAME));
    environment.insert(QStringLiteral("WAVO_BENCH_WIDGET"), widget);
    // Settings of its own.
    environment.insert(QStringLiteral("HOME"), home);
    environment.remove(QStringLiteral("XDG_CONFIG_HOME"));
    environment.remove(QStringLiteral("XDG_DATA_HOME"));
    return environment;
}

/// Reads what a process says until a line holds `text`, and gives the rest of that line.
std::optional<QString> WaitForText(QProcess& process, const QString& text) {
    QString said;
    QElapsedTimer clock;
    clock.start();
    while (!clock.hasExpired(kPatience)) {
        const qsizetype found = said.indexOf(text);
        if (found >= 0 && said.indexOf(QLatin1Char('\n'), found) > found) {
            return said.mid(found + text.size(),
                            said.indexOf(QLatin1Char('\n'), found) - found - text.size());
        }
        process.waitForReadyRead(100);
        said += QString::fromUtf8(process.readAllStandardOutput());
    }
    return std::nullopt;
}

void End(QProcess& process) {
    process.terminate();
    if (!process.waitForFinished(kPatience)) {
        process.kill();
        process.waitForFinished(kPatience);
    }
}

/// A program with a window.
class Viewer {
 public:
    Viewer(const QString& program, const QString& widget) {
        m_process.setProcessEnvironment(Environment(widget, m_home.path()));
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_started = Clock::now();
        m_process.start(program, QStringList());
    }
    ~Viewer() { End(m_process); }
    Viewer(const Viewer&) = delete;
    Viewer& operator=(const Viewer&) = delete;
    Viewer(Viewer&&) = delete;
    Viewer& operator=(Viewer&&) = delete;

    /// Nanoseconds from the start to the first frame.
    std::optional<double> WaitForFirstFrame() {
        const std::optional<QString> time = WaitForText(m_process, QStringLiteral("first frame "));
        if (!time.has_value()) {
            return std::nullopt;
        }
        return static_cast<double>(time->toLongLong() - m_started.time_since_epoch().count());
    }

    /// Processor time of the process so far, ns.
    [[nodiscard]] double ProcessorTime() const {
        const QDir threads(QStringLiteral("/proc/%1/task").arg(m_process.processId()));
        double used = 0.0;
        for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile file(threads.filePath(thread + QStringLiteral("/schedstat")));
            if (file.open(QIODevice::ReadOnly)) {
                used += file.readAll().split(' ').value(0).toDouble();
            }
        }
        return used;
    }

 private:
    QTemporaryDir m_home;
    QProcess m_process;
    Clock::time_point m_started;
};

/// A master that publishes; a silent one has published a few lines and stays.
class Master {
 public:
    explicit Master(bool silent) {
        QStringList arguments{QStringLiteral("--motion"), QStringLiteral("circle")};
        if (silent) {
            arguments << QStringLiteral("--lines") << QStringLiteral("100")
                      << QStringLiteral("--stay");
        }
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(WAVO_DEMO_MASTER), arguments);
        m_runs = WaitForText(m_process, QStringLiteral("demo_master: window")).has_value();
    }
    ~Master() { End(m_process); }
    Master(const Master&) = delete;
    Master& operator=(const Master&) = delete;
    Master(Master&&) = delete;
    Master& operator=(Master&&) = delete;

    [[nodiscard]] bool Runs() const { return m_runs; }

 private:
    QProcess m_process;
    bool m_runs = false;
};

void FirstPicture(benchmark::State& state, const char* program, const char* widget, bool master) {
    std::unique_ptr<Master> running;
    if (master) {
        running = std::make_unique<Master>(false);
        if (!running->Runs()) {
            state.SkipWithError("the master did not start");
            return;
        }
    }
    for (auto _ : state) {
        Viewer viewer(QString::fromUtf8(program), QString::fromUtf8(widget));
        const std::optional<double> time = viewer.WaitForFirstFrame();
        if (!time.has_value()) {
            state.SkipWithError("no frame was painted");
            return;
        }
        state.SetIterationTime(*time * 1e-9);
    }
}

void LeastProgram(benchmark::State& state) {
    for (auto _ : state) {
        QProcess process;
        const auto started = Clock::now();
        process.start(QStringLiteral(WAVO_VIEWER), {QStringLiteral("--version")});
        process.waitForFinished(kPatience);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - started).count());
    }
    state.SetLabel("wavo --version");
}

void Idle(benchmark::State& state, const char* program, const char* widget, bool master) {
    std::unique_ptr<Master> silent;
    if (master) {
        silent = std::make_unique<Master>(true);
        if (!silent->Runs()) {
            state.SkipWithError("the master did not start");
            return;
        }
    }
    Viewer viewer(QString::fromUtf8(program), QString::fromUtf8(widget));
    if (!viewer.WaitForFirstFrame().has_value()) {
        state.SkipWithError("no frame was painted");
        return;
    }
    std::this_thread::sleep_for(kIdle);  // until what starting brings is done
    double used = 0.0;
    for (auto _ : state) {
        const double before = viewer.ProcessorTime();
        std::this_thread::sleep_for(kIdle);
        used += viewer.ProcessorTime() - before;
    }
    state.counters["ns_per_item"] = used / static_cast<double>(state.iterations()) /
                                    std::chrono::duration<double>(kIdle).count();
}

void FirstPictureOurs(benchmark::State& state) {
    FirstPicture(state, WAVO_VIEWER, "wavo::CWavoView", true);
}
void FirstPictureRival(benchmark::State& state) {
    FirstPicture(state, WAVO_RIVAL_WINDOW, "QCustomPlot", false);
    state.SetLabel("QCustomPlot's smallest window");
}
void IdleOurs(benchmark::State& state) {
    Idle(state, WAVO_VIEWER, "wavo::CWavoView", true);
}
void IdleRival(benchmark::State& state) {
    Idle(state, WAVO_RIVAL_WINDOW, "QCustomPlot", false);
    state.SetLabel("QCustomPlot's smallest window");
}
void IdleLimit(benchmark::State& state) {
    for (auto _ : state) {
    }
    state.counters["ns_per_item"] = 0.0;
    state.SetLabel("nothing");
}

}  // namespace

BENCHMARK(FirstPictureOurs)
    ->Name("first_picture/ours")
    ->Iterations(kFirstPictures)
    ->UseManualTime();
BENCHMARK(FirstPictureRival)
    ->Name("first_picture/rival")
    ->Iterations(kFirstPictures)
    ->UseManualTime();
BENCHMARK(LeastProgram)->Name("first_picture/limit")->Iterations(kFirstPictures)->UseManualTime();
BENCHMARK(IdleOurs)->Name("idle/ours")->Iterations(1);
BENCHMARK(IdleRival)->Name("idle/rival")->Iterations(1);
BENCHMARK(IdleLimit)->Name("idle/limit")->Iterations(1);

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
