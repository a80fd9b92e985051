#include "machine.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QTest>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <utility>

namespace wavo::testing {

namespace {

struct ProcessFacts {
    std::string name;
    char state = 'Z';
    std::int64_t parent = 0;
    double ticks = 0.0;  ///< processor time
};

/// What the system tells in the file `stat` of a process.
ProcessFacts FactsOf(std::int64_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string text;
    std::getline(file, text);
    const auto open = text.find('(');
    const auto close = text.rfind(')');
    ProcessFacts facts;
    if (open == std::string::npos || close == std::string::npos) {
        return facts;
    }
    facts.name = text.substr(open + 1, close - open - 1);
    std::istringstream fields(text.substr(close + 1));
    fields >> facts.state >> facts.parent;
    std::string skipped;
    for (int i = 0; i < 9; ++i) {
        fields >> skipped;
    }
    double user = 0.0;
    double system = 0.0;
    fields >> user >> system;
    facts.ticks = user + system;
    return facts;
}

}  // namespace

Mill::Mill(QString folder) : m_folder(std::move(folder)) {
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    QObject::connect(&m_process, &QProcess::readyRead,
                     [this] { m_output += QString::fromUtf8(m_process.readAll()); });
    for (const char* name : {"sim.ini", "sim.hal"}) {
        QFile::copy(QStringLiteral(WAVO_MILL "/") + QLatin1String(name), Path(name));
    }
}

Mill::~Mill() {
    Stop();
    if (::testing::Test::HasFailure()) {
        std::printf("%s\n", m_output.toUtf8().constData());
    }
}

void Mill::Write(const QString& name, const std::string& text) const {
    std::ofstream(Path(name).toStdString()) << text;
}

std::string Mill::Read(const QString& name) const {
    std::ifstream file(Path(name).toStdString());
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

void Mill::AddHalFile(const QString& name) const {
    std::string ini = Read("sim.ini");
    const std::string last = "HALFILE = sim.hal\n";
    ini.insert(ini.find(last) + last.size(), "HALFILE = " + name.toStdString() + "\n");
    QFile::setPermissions(Path("sim.ini"), QFile::ReadOwner | QFile::WriteOwner);
    Write("sim.ini", ini);
}

bool Mill::Start(const QStringList& arguments) {
    m_output.clear();
    m_process.start(QStringLiteral(WAVO_MILL "/start.sh"), QStringList{"-w", m_folder} + arguments);
    return QTest::qWaitFor(
               [this] {
                   return m_output.contains("machine: on\n") ||
                          m_process.state() == QProcess::NotRunning;
               },
               60000) &&
           m_process.state() == QProcess::Running;
}

bool Mill::WaitForEnd(int milliseconds) {
    return QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; },
                           milliseconds);
}

int Mill::Stop() {
    if (m_process.state() != QProcess::NotRunning) {
        Write("stop", "");
        if (!WaitForEnd(30000)) {
            m_process.terminate();
            if (!WaitForEnd(30000)) {
                m_process.kill();
                m_process.waitForFinished();
            }
            return -1;
        }
    }
    return m_process.exitCode();
}

std::optional<std::int64_t> Mill::Process(const std::string& program) const {
    std::map<std::int64_t, ProcessFacts> processes;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") == std::string::npos) {
            processes[std::stoll(name)] = FactsOf(std::stoll(name));
        }
    }
    const auto is_ours = [&](std::int64_t process) {
        while (process > 1 && process != m_process.processId()) {
            process = processes[process].parent;
        }
        return process > 1;
    };
    for (const auto& [number, facts] : std::map(processes)) {
        if (facts.name == program.substr(0, 15) && facts.state != 'Z' && is_ours(number)) {
            return number;
        }
    }
    return std::nullopt;
}

double ProcessorTimeOf(std::int64_t process) {
    return FactsOf(process).ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

void KillProcess(std::int64_t process) {
    ::kill(static_cast<pid_t>(process), SIGKILL);
}

}  // namespace wavo::testing
