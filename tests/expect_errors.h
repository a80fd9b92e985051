// Error-log entries in tests: each one must be announced, or the test fails.
//
//   ExpectErrorLog expected({"Close(): MSharedMem_Unlink() failed"});
//   reader.Close();
//
// When the object goes, the entries since its creation must be exactly the announced texts, in
// order. Error-trace messages and traces can be collected with CollectReports.
#pragma once

#include <string>
#include <vector>

#include "support/diagnostics_output.h"

namespace wavo::testing {

/// Makes every test fail that leaves an unannounced error-log entry. For main() of test programs.
void InstallReportListener();

/// Announces the exact error-log entries of a scope.
class ExpectErrorLog {
 public:
    explicit ExpectErrorLog(std::vector<std::string> texts);
    ~ExpectErrorLog();
    ExpectErrorLog(const ExpectErrorLog&) = delete;
    ExpectErrorLog& operator=(const ExpectErrorLog&) = delete;

 private:
    std::vector<std::string> m_expected;
    std::size_t m_first;
};

/// Announces that error-log entries come whose number depends on timing.
class ExpectAnyErrorLog {
 public:
    ExpectAnyErrorLog();
    ~ExpectAnyErrorLog();
    ExpectAnyErrorLog(const ExpectAnyErrorLog&) = delete;
    ExpectAnyErrorLog& operator=(const ExpectAnyErrorLog&) = delete;

    /// Whether this entry was written since the object was made.
    [[nodiscard]] bool Saw(const std::string& text) const;

 private:
    std::size_t m_first;
};

/// Texts of the reports of one service that went out since the object was made.
class CollectReports {
 public:
    explicit CollectReports(diagnostics::Service service);
    [[nodiscard]] std::vector<std::string> Texts() const;

 private:
    diagnostics::Service m_service;
    std::size_t m_first;
};

}  // namespace wavo::testing
