// The crash hook: what happens between an exception that nobody handles, or an abort(), and the end
// of the process.
//
// The record is written by the process itself, whose heap may be damaged. So the backtrace comes
// first with names as linked, for which nothing is allocated, and then once more with names that
// people read.
#include <cxxabi.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "platform/last_error.h"
#include "platform/process.h"
#include "platform/win32/crash_record.h"
#include "platform/win32/handle.h"
#include "platform/win32/symboliser.h"
#include "platform/win32/wide.h"

namespace wavo::platform {

namespace {

constexpr DWORD kAborted = 0xE0574156;  // a number of our own: abort() raises no exception
constexpr std::size_t kLargestDepth = 128;
constexpr ULONG kStackKept = 64 * 1024;  // for the handler, should the stack be full

struct KnownException {
    DWORD code;
    const char* name;
};
constexpr std::array<KnownException, 9> kKnownExceptions{
    {{EXCEPTION_ACCESS_VIOLATION, "access violation"},
     {EXCEPTION_STACK_OVERFLOW, "stack overflow"},
     {EXCEPTION_ILLEGAL_INSTRUCTION, "illegal instruction"},
     {EXCEPTION_PRIV_INSTRUCTION, "privileged instruction"},
     {EXCEPTION_IN_PAGE_ERROR, "in-page error"},
     {EXCEPTION_INT_DIVIDE_BY_ZERO, "integer division by zero"},
     {EXCEPTION_FLT_DIVIDE_BY_ZERO, "division by zero"},
     {EXCEPTION_BREAKPOINT, "breakpoint"},
     {kAborted, "abort"}}};

// Plain memory, zero before any code runs: the hook may be installed by static initialisation.
struct Hook {
    std::array<wchar_t, 4096> file;
    std::array<char, 128> version;
    std::array<wchar_t, 4096> program_path;
    std::array<char, 256> program_name;  // without its folders, as far as it is ASCII
    std::uintptr_t program;              // its address in memory
    bool installed;
};
Hook g_hook;
std::atomic<DWORD> g_crashing_thread{0};

struct Frame {
    std::uintptr_t address = 0;
    std::uintptr_t module = 0;  // that the address lies in; 0 when none is known
};
struct Stack {
    std::array<Frame, kLargestDepth> frames{};
    std::size_t depth = 0;
};

/// Walks up from the place of the exception with the tables that every module has for it. A call
/// through a null pointer leaves that as the first place.
void Unwind(CONTEXT context, Stack* stack) noexcept {
    while ((context.Rip != 0 || stack->depth == 0) && stack->depth < stack->frames.size()) {
        Frame& frame = stack->frames[stack->depth++];
        frame.address = context.Rip;
        DWORD64 module = 0;
        PRUNTIME_FUNCTION const function = ::RtlLookupFunctionEntry(context.Rip, &module, nullptr);
        frame.module = module;
        if (function == nullptr) {
            // A function without an entry calls nothing: its return address lies on top. A jump
            // into nowhere left the stack like that, too.
            if (stack->depth > 1) {
                break;
            }
            context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
            continue;
        }
        void* data = nullptr;
        DWORD64 establisher = 0;
        ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, module, context.Rip, function, &context, &data,
                           &establisher, nullptr);
    }
}

/// Notes what is to be known of the program itself.
void NoteProgram() noexcept {
    g_hook.program = reinterpret_cast<std::uintptr_t>(::GetModuleHandleW(nullptr));
    const DWORD length = ::GetModuleFileNameW(nullptr, g_hook.program_path.data(),
                                              static_cast<DWORD>(g_hook.program_path.size()));
    if (length == g_hook.program_path.size()) {
        g_hook.program_path[0] = L'\0';  // cut off
        return;
    }
    std::size_t begin = length;
    while (begin > 0 && g_hook.program_path[begin - 1] != L'\\') {
        --begin;
    }
    for (std::size_t i = 0; begin + i < length && i + 1 < g_hook.program_name.size(); ++i) {
        const wchar_t letter = g_hook.program_path[begin + i];
        g_hook.program_name[i] = letter < 0x80 ? static_cast<char>(letter) : '?';
    }
}

/// The name that a module gives itself among what it exports; empty when it exports nothing. The
/// system's own list of modules is behind a lock, which a thread that crashed may hold.
std::string_view ExportedName(std::uintptr_t module) noexcept {
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    if (dos.e_magic != IMAGE_DOS_SIGNATURE) {
        return {};
    }
    const auto& headers =
        *reinterpret_cast<const IMAGE_NT_HEADERS*>(module + static_cast<DWORD>(dos.e_lfanew));
    const std::size_t size = headers.OptionalHeader.SizeOfImage;
    const DWORD table =
        headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    if (headers.Signature != IMAGE_NT_SIGNATURE || table == 0 ||
        table + sizeof(IMAGE_EXPORT_DIRECTORY) > size) {
        return {};
    }
    const DWORD name = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(module + table)->Name;
    if (name == 0 || name >= size) {
        return {};
    }
    const auto* const text = reinterpret_cast<const char*>(module + name);
    return {text, ::strnlen(text, std::min<std::size_t>(size - name, 256))};
}

std::string_view ModuleName(std::uintptr_t module) noexcept {
    if (module == g_hook.program) {
        return g_hook.program_name.data();
    }
    const std::string_view name = ExportedName(module);
    return name.empty() ? "?" : name;
}

void WriteName(CrashRecord* record, std::string_view name, bool demangle) noexcept {
    std::array<char, 1024> linked{};
    const std::size_t size = std::min(name.size(), linked.size() - 1);
    std::copy_n(name.data(), size, linked.data());
    char* const readable =
        demangle ? abi::__cxa_demangle(linked.data(), nullptr, nullptr, nullptr) : nullptr;
    record->Text(" ").Text(readable != nullptr ? readable : linked.data());
    std::free(readable);
}

void WriteBacktrace(CrashRecord* record, const Stack& stack, const Symboliser& symbols,
                    bool demangle) noexcept {
    for (std::size_t i = 0; i < stack.depth; ++i) {
        const std::uintptr_t address = stack.frames[i].address;
        const std::uintptr_t module = stack.frames[i].module;
        record->Text("  #").Decimal(i).Text(" ").Hex(address);
        if (module != 0) {
            record->Text(" ").Text(ModuleName(module)).Text("+").Hex(address - module);
        }
        if (module != 0 && module == g_hook.program) {
            // A return address stands behind its call, possibly already in the next function.
            const auto offset = static_cast<std::uint32_t>(address - module - (i > 0 ? 1 : 0));
            if (const Symboliser::Symbol symbol = symbols.Find(offset); !symbol.name.empty()) {
                WriteName(record, symbol.name, demangle);
                record->Text("+").Hex(address - module - symbol.address);
            }
        }
        record->EndLine();
    }
}

const char* NameOf(DWORD code) noexcept {
    for (const KnownException& known : kKnownExceptions) {
        if (known.code == code) {
            return known.name;
        }
    }
    return "unknown";
}

void WriteHead(CrashRecord* record, const EXCEPTION_RECORD& exception) noexcept {
    record->Text("---- crash of ")
        .Text(g_hook.program_name.data())
        .Text(", process ")
        .Decimal(::GetCurrentProcessId())
        .EndLine();
    record->Text("exception: ").Hex(exception.ExceptionCode).Text(" (");
    record->Text(NameOf(exception.ExceptionCode)).Text(")");
    if (exception.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && exception.NumberParameters >= 2) {
        record->Text(", address ").Hex(exception.ExceptionInformation[1]);
    }
    record->Text(", instruction ")
        .Hex(reinterpret_cast<std::uintptr_t>(exception.ExceptionAddress));
    record->EndLine();
    record->Text("time: ").Time(UtcNow()).EndLine();
    record->Text("version: ").Text(g_hook.version.data()).EndLine();
}

void WriteRecord(const EXCEPTION_RECORD& exception, const CONTEXT& context) noexcept {
    DWORD nobody = 0;
    if (!g_crashing_thread.compare_exchange_strong(nobody, ::GetCurrentThreadId())) {
        if (nobody != ::GetCurrentThreadId()) {
            ::Sleep(INFINITE);  // another thread is writing its record; it ends the process
        }
        return;  // writing the record met a fault: what there is has to do
    }
    const Handle file(g_hook.file[0] != L'\0'
                          ? ::CreateFileW(g_hook.file.data(), FILE_APPEND_DATA,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr)
                          : nullptr);
    CrashRecord record(file.get());
    WriteHead(&record, exception);
    static Stack stack;  // there may be little of the real one left
    Unwind(context, &stack);
    const Symboliser symbols(g_hook.program_path.data());
    record.Text("backtrace, names as linked:").EndLine();
    WriteBacktrace(&record, stack, symbols, false);
    record.Text("backtrace:").EndLine();
    WriteBacktrace(&record, stack, symbols, true);
    record.Text("---- end").EndLine();
}

LPTOP_LEVEL_EXCEPTION_FILTER g_previous_filter = nullptr;

LONG WINAPI OnUnhandledException(EXCEPTION_POINTERS* pointers) {
    WriteRecord(*pointers->ExceptionRecord, *pointers->ContextRecord);
    return g_previous_filter != nullptr ? g_previous_filter(pointers) : EXCEPTION_CONTINUE_SEARCH;
}

void OnAbort(int /*signal*/) {
    CONTEXT context{};
    ::RtlCaptureContext(&context);
    EXCEPTION_RECORD exception{};
    exception.ExceptionCode = kAborted;
    exception.ExceptionAddress = reinterpret_cast<void*>(context.Rip);
    WriteRecord(exception, context);
    // abort() goes on to end the process.
}

}  // namespace

void InstallCrashHook(const std::string& file, const std::string& version) {
    const LastErrorKeeper keep;
    // Without the file while the names change.
    g_hook.file[0] = L'\0';
    const std::size_t version_size = std::min(version.size(), g_hook.version.size() - 1);
    std::memcpy(g_hook.version.data(), version.data(), version_size);
    g_hook.version[version_size] = '\0';
    if (const std::wstring wide = Wide(file); wide.size() < g_hook.file.size()) {
        std::copy_n(wide.c_str(), wide.size() + 1, g_hook.file.data());
    }
    if (g_hook.installed) {
        return;
    }
    g_hook.installed = true;
    NoteProgram();
    ULONG kept = kStackKept;
    ::SetThreadStackGuarantee(&kept);
    g_previous_filter = ::SetUnhandledExceptionFilter(&OnUnhandledException);
    // In a program with windows abort() would show a box first, whose loop hands out messages.
    ::_set_error_mode(_OUT_TO_STDERR);
    std::signal(SIGABRT, &OnAbort);
}

}  // namespace wavo::platform
