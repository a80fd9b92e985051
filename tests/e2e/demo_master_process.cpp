#include "demo_master_process.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>
#include <algorithm>
#include <charconv>
#include <iostream>
#include <sstream>

#include "link/wire_format.h"
#include "platform/shared_memory.h"
#include "system/other_process.h"

namespace wavo::testing {

namespace {

bool InfoBlockIsThere() {
    const platform::MappingHandle handle = platform::OpenSharedMemory(kInfoSegmentName);
    if (handle == 0) {
        return false;
    }
    platform::CloseSharedMemory(handle);
    return true;
}

}  // namespace

DemoMaster::DemoMaster(const QStringList& arguments)
    : DemoMaster(QStringLiteral("demo_master"), QStringLiteral(WAVO_DEMO_MASTER), arguments) {}

DemoMaster::DemoMaster(const QString& name, const QString& program, const QStringList& arguments) {
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, [this] { ReadOutput(); });
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(program, arguments);
    // The line is printed after the info block was published.
    if (!m_process.waitForStarted() ||
        !QTest::qWaitFor([&] { return m_output.contains(name + QStringLiteral(": window")); },
                         10000) ||
        !InfoBlockIsThere()) {
        ADD_FAILURE() << name.toStdString() << " did not start: " << m_output.toStdString();
    }
}

DemoMaster::~DemoMaster() {
    if (IsRunning()) {
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            Kill();
        }
    }
    if (::testing::Test::HasFailure()) {
        ReadOutput();
        std::cout << "demo_master said:\n" << m_output.toStdString();
    }
}

void DemoMaster::ReadOutput() {
    m_output += QString::fromUtf8(m_process.readAllStandardOutput());
}

bool DemoMaster::WaitForOutputAlone(const QString& text) {
    QElapsedTimer clock;
    clock.start();
    while (!m_output.contains(text) && !clock.hasExpired(20000)) {
        m_process.waitForReadyRead(100);
        ReadOutput();
    }
    return m_output.contains(text);
}

std::optional<MasterTotals> DemoMaster::End() {
    m_process.terminate();
    return WaitForEnd();
}

std::optional<MasterTotals> DemoMaster::WaitForEnd(int milliseconds) {
    if (!QTest::qWaitFor([this] { return !IsRunning(); }, milliseconds)) {
        ADD_FAILURE() << "demo_master did not end: " << m_output.toStdString();
        return std::nullopt;
    }
    ReadOutput();
    static const QRegularExpression totals(
        QStringLiteral("total: lines sent (\\d+), batches answered (\\d+), overruns (\\d+)"));
    const QRegularExpressionMatch match = totals.match(m_output);
    if (!match.hasMatch()) {
        return std::nullopt;
    }
    return MasterTotals{match.captured(1).toULongLong(), match.captured(2).toULongLong(),
                        match.captured(3).toULongLong()};
}

void DemoMaster::Kill() {
    m_process.kill();
    m_process.waitForFinished();
}

void DemoMaster::Freeze() {
    FreezeProcess(m_process.processId());
}

void DemoMaster::Thaw() {
    ThawProcess(m_process.processId());
}

QString RecordingPath(const std::string& name) {
    return QStringLiteral(WAVO_RECORDINGS "/") + QString::fromStdString(name) +
           QStringLiteral(".csv.gz");
}

std::vector<std::vector<double>> ReadRecording(const std::string& name,
                                               const std::vector<std::string>& columns) {
    std::vector<std::vector<double>> values(columns.size());
    gzFile file = gzopen(RecordingPath(name).toUtf8().constData(), "rb");
    if (file == nullptr) {
        ADD_FAILURE() << "no recording " << name;
        return values;
    }
    char text[4096];
    std::vector<std::size_t> wanted;
    while (gzgets(file, text, sizeof text) != nullptr) {
        std::vector<std::string> cells;
        std::string cell;
        for (std::istringstream row(text); std::getline(row, cell, ',');) {
            cells.push_back(cell.substr(0, cell.find_last_not_of("\r\n") + 1));
        }
        if (wanted.empty()) {
            for (const std::string& column : columns) {
                const auto found = std::find(cells.begin(), cells.end(), column);
                EXPECT_NE(found, cells.end()) << column;
                wanted.push_back(static_cast<std::size_t>(found - cells.begin()));
            }
            continue;
        }
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            values[i].push_back(std::strtod(cells.at(wanted[i]).c_str(), nullptr));
        }
    }
    gzclose(file);
    return values;
}

}  // namespace wavo::testing
