// What the application reports to the trace and to the user, where others rely on the words:
// service tools search logs for them. They stay byte for byte; names in them may be those of a
// former time.
#pragma once

#include <string>

namespace wavo::shell_texts {

// The trace.
inline constexpr char kStarting[] = "CWavoApp::InitInstance(): starting";
inline constexpr char kStarted[] = "CWavoApp::InitInstance(): done";

// Message boxes.
inline std::string NoGraphFileBox(const std::string& name) {
    return "Can not open file [" + name + "], not exist";
}

}  // namespace wavo::shell_texts
