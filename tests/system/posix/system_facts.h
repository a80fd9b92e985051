// What tests have to know of the system that they run on.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <string>

namespace wavo::testing {

/// The environment variable below whose folder the data folder lies.
inline constexpr char kDataHome[] = "XDG_DATA_HOME";

/// The same of the folder of logs, and where they lie below it.
inline constexpr char kStateHome[] = "XDG_STATE_HOME";
inline constexpr char kLogFolder[] = "Velk/";

/// The same of the folder of large files that only a running program needs.
inline constexpr char kCacheHome[] = "XDG_CACHE_HOME";
inline constexpr char kCacheFolder[] = "Velk/";

/// The toolkit's platform for end-to-end tests: the windows need no display.
inline constexpr char kEndToEndPlatform[] = "offscreen";

/// Numbers that the system gives, and platform::LastError() tells.
inline constexpr int kFileExists = EEXIST;
inline constexpr int kNoSuchFolder = ENOENT;
inline constexpr int kIsAFolder = EISDIR;

/// Whether a folder stays while a file in it is open.
inline constexpr bool kOpenFilesHoldTheirFolder = false;

/// Whether a segment stays without those who hold it, and its name can be taken away from them.
inline constexpr bool kSegmentsOutliveTheirMaker = true;

/// A width at which the graph editor stands in one row.
inline constexpr int kSmallScreenWidth = 1278;

inline void SetVariable(const char* name, const std::string& value) {
    ::setenv(name, value.c_str(), 1);
}
inline void UnsetVariable(const char* name) {
    ::unsetenv(name);
}

}  // namespace wavo::testing
