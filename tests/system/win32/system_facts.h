// What tests have to know of the system that they run on.
#pragma once

#include <cstdlib>
#include <string>

namespace wavo::testing {

/// The environment variable below whose folder the data folder lies.
inline constexpr char kDataHome[] = "WAVO_DATA_HOME";

/// The same of the folder of logs, and where they lie below it.
inline constexpr char kStateHome[] = "WAVO_DATA_HOME";
inline constexpr char kLogFolder[] = "Velk/logs/";

/// The same of the folder of large files that only a running program needs.
inline constexpr char kCacheHome[] = "WAVO_DATA_HOME";
inline constexpr char kCacheFolder[] = "Velk/cache/";

/// The toolkit's platform for end-to-end tests: a program without real windows could not be asked
/// to end.
inline constexpr char kEndToEndPlatform[] = "windows";

/// Numbers that the system gives, and platform::LastError() tells.
inline constexpr int kFileExists = 80;
inline constexpr int kNoSuchFolder = 3;
inline constexpr int kIsAFolder = 5;

/// Whether a folder stays while a file in it is open.
inline constexpr bool kOpenFilesHoldTheirFolder = true;

/// Whether a segment stays without those who hold it, and its name can be taken away from them.
inline constexpr bool kSegmentsOutliveTheirMaker = false;

/// A width at which the graph editor stands in one row: texts of this system are wider.
inline constexpr int kSmallScreenWidth = 1366;

inline void SetVariable(const char* name, const std::string& value) {
    ::_putenv_s(name, value.c_str());
}
inline void UnsetVariable(const char* name) {
    ::_putenv_s(name, "");
}

}  // namespace wavo::testing
