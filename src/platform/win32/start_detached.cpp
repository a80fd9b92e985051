#include <windows.h>

#include "platform/last_error.h"
#include "platform/process.h"
#include "platform/win32/handle.h"
#include "platform/win32/program_line.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

/// Appends an argument such that CommandLineToArgvW and the C library take it for one: backslashes
/// count double before a quotation mark, and only there.
void AppendArgument(std::wstring& line, const std::wstring& argument) {
    if (!line.empty()) {
        line += L' ';
    }
    line += L'"';
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') {
            line.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        line += c;
    }
    line.append(backslashes, L'\\');
    line += L'"';
}

}  // namespace

std::wstring ProgramLine(const std::string& program, const std::vector<std::string>& arguments) {
    std::wstring line;
    AppendArgument(line, Wide(program));
    for (const std::string& argument : arguments) {
        AppendArgument(line, Wide(argument));
    }
    return line;
}

bool StartDetached(const std::string& program, const std::vector<std::string>& arguments,
                   std::string* error) {
    std::wstring line = ProgramLine(program, arguments);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (::CreateProcessW(Wide(program).c_str(), line.data(), nullptr, nullptr, FALSE,
                         CREATE_NO_WINDOW | CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &start,
                         &process) == 0) {
        *error = ErrorText(LastError());
        return false;
    }
    const Handle thread(process.hThread);
    const Handle handle(process.hProcess);
    return true;
}

}  // namespace wavo::platform
