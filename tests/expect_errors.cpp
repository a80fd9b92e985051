#include "expect_errors.h"

#include <gtest/gtest.h>

#include <utility>

namespace wavo::testing {

namespace {

struct StoredReport {
    diagnostics::Service service;
    std::string text;
    bool announced = false;
};

std::vector<StoredReport>& Reports() {
    static std::vector<StoredReport> reports;
    return reports;
}

/// Fails each test that left an error-log entry nobody announced.
class ReportListener : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo&) override {
        Reports().clear();
        diagnostics::SetObserver([](const diagnostics::Report& report) {
            Reports().push_back({report.service, std::string(report.text)});
        });
    }

    void OnTestEnd(const ::testing::TestInfo&) override {
        diagnostics::SetObserver(nullptr);
        for (const StoredReport& report : Reports()) {
            if (report.service == diagnostics::Service::kErrorLog && !report.announced) {
                ADD_FAILURE() << "error-log entry not announced: " << report.text;
            }
        }
    }
};

}  // namespace

void InstallReportListener() {
    ::testing::UnitTest::GetInstance()->listeners().Append(new ReportListener);
}

ExpectErrorLog::ExpectErrorLog(std::vector<std::string> texts)
    : m_expected(std::move(texts)), m_first(Reports().size()) {}

ExpectErrorLog::~ExpectErrorLog() {
    std::vector<std::string> seen;
    for (std::size_t i = m_first; i < Reports().size(); ++i) {
        StoredReport& report = Reports()[i];
        if (report.service == diagnostics::Service::kErrorLog && !report.announced) {
            report.announced = true;
            seen.push_back(report.text);
        }
    }
    EXPECT_EQ(seen, m_expected);
}

ExpectAnyErrorLog::ExpectAnyErrorLog() : m_first(Reports().size()) {}

ExpectAnyErrorLog::~ExpectAnyErrorLog() {
    for (std::size_t i = m_first; i < Reports().size(); ++i) {
        Reports()[i].announced = true;
    }
}

bool ExpectAnyErrorLog::Saw(const std::string& text) const {
    for (std::size_t i = m_first; i < Reports().size(); ++i) {
        if (Reports()[i].service == diagnostics::Service::kErrorLog && Reports()[i].text == text) {
            return true;
        }
    }
    return false;
}

CollectReports::CollectReports(diagnostics::Service service)
    : m_service(service), m_first(Reports().size()) {}

std::vector<std::string> CollectReports::Texts() const {
    std::vector<std::string> texts;
    for (std::size_t i = m_first; i < Reports().size(); ++i) {
        if (Reports()[i].service == m_service) {
            texts.push_back(Reports()[i].text);
        }
    }
    return texts;
}

}  // namespace wavo::testing
