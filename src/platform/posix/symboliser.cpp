#include "platform/posix/symboliser.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <unwind.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

#if WAVO_HAVE_LIBBACKTRACE
#include <backtrace.h>
#endif

namespace wavo::platform {

namespace {

constexpr std::size_t kLargestDepth = 128;

struct Frame {
    std::uintptr_t address = 0;  ///< as the unwinder tells it
    std::uintptr_t call = 0;     ///< within the instruction that was under way
};

struct Stack {
    std::array<Frame, kLargestDepth> frames;
    std::size_t depth = 0;
};

_Unwind_Reason_Code AddFrame(_Unwind_Context* context, void* data) {
    Stack& stack = *static_cast<Stack*>(data);
    int before_instruction = 0;
    const std::uintptr_t address = _Unwind_GetIPInfo(context, &before_instruction);
    if (address == 0 || stack.depth == stack.frames.size()) {
        return _URC_END_OF_STACK;
    }
    // A return address stands behind its call, possibly already in the next function.
    stack.frames[stack.depth++] = {address, before_instruction != 0 ? address : address - 1};
    return _URC_NO_REASON;
}

struct Output {
    CrashRecord* record;
    bool demangle;
    std::uintptr_t address;
    std::size_t number;
    bool written;
};

/// Function, and place when it is known, as one line.
void WriteFrame(Output* output, const char* function, const char* file, int line) {
    CrashRecord& record = *output->record;
    record.Text(output->written ? "   in " : "  #");
    if (!output->written) {
        record.Decimal(output->number).Text(" ");
    }
    int status = -1;
    const std::unique_ptr<char, void (*)(void*)> words(
        output->demangle && function != nullptr
            ? abi::__cxa_demangle(function, nullptr, nullptr, &status)
            : nullptr,
        &std::free);
    if (words) {
        record.Text(words.get());
    } else {
        record.Text(function != nullptr ? function : "?");
    }
    if (file != nullptr) {
        record.Text(" at ").Text(file).Text(":").Decimal(static_cast<std::uint64_t>(line));
    }
    Dl_info module{};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a code address is a number until it is named
    if (!output->written && ::dladdr(reinterpret_cast<void*>(output->address), &module) != 0 &&
        module.dli_fname != nullptr) {
        const char* slash = std::strrchr(module.dli_fname, '/');
        record.Text(" [").Text(slash != nullptr ? slash + 1 : module.dli_fname).Text("+");
        record.Hex(output->address - reinterpret_cast<std::uintptr_t>(module.dli_fbase)).Text("]");
    } else if (!output->written) {
        record.Text(" [").Hex(output->address).Text("]");
    }
    record.EndLine();
    output->written = true;
}

/// Name by the dynamic symbols alone.
const char* ExportedName(std::uintptr_t address) {
    Dl_info info{};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a code address is a number until it is named
    return ::dladdr(reinterpret_cast<void*>(address), &info) != 0 ? info.dli_sname : nullptr;
}

#if WAVO_HAVE_LIBBACKTRACE

void IgnoreError(void* /*data*/, const char* /*message*/, int /*error*/) {}

void TakeSymbol(void* data, std::uintptr_t /*address*/, const char* name, std::uintptr_t /*value*/,
                std::uintptr_t /*size*/) {
    *static_cast<const char**>(data) = name;
}

const char* LinkedName(backtrace_state* state, std::uintptr_t address) {
    const char* name = nullptr;
    backtrace_syminfo(state, address, &TakeSymbol, &IgnoreError, &name);
    return name != nullptr ? name : ExportedName(address);
}

struct Search {
    Output* output;
    backtrace_state* state;
};

// Called once per function that was inlined at the place, the innermost first.
int TakePlace(void* data, std::uintptr_t address, const char* file, int line,
              const char* function) {
    const Search& search = *static_cast<Search*>(data);
    if (function == nullptr && file == nullptr) {
        return 0;
    }
    WriteFrame(search.output, function != nullptr ? function : LinkedName(search.state, address),
               file, line);
    return 0;
}

void WriteFrames(const Frame* frames, std::size_t count, Output* output) {
    backtrace_state* state = backtrace_create_state(nullptr, 0, &IgnoreError, nullptr);
    for (std::size_t i = 0; i < count; ++i) {
        output->number = i;
        output->address = frames[i].call;
        output->written = false;
        if (state != nullptr) {
            Search search{output, state};
            backtrace_pcinfo(state, frames[i].call, &TakePlace, &IgnoreError, &search);
        }
        if (!output->written) {
            WriteFrame(
                output,
                state != nullptr ? LinkedName(state, frames[i].call) : ExportedName(frames[i].call),
                nullptr, 0);
        }
    }
}

#else

void WriteFrames(const Frame* frames, std::size_t count, Output* output) {
    for (std::size_t i = 0; i < count; ++i) {
        output->number = i;
        output->address = frames[i].call;
        output->written = false;
        WriteFrame(output, ExportedName(frames[i].call), nullptr, 0);
    }
}

#endif

}  // namespace

void WriteBacktrace(CrashRecord* record, std::uintptr_t start, bool demangle) {
    Stack stack;
    _Unwind_Backtrace(&AddFrame, &stack);
    Output output{record, demangle, 0, 0, false};
    const Frame* begin = stack.frames.data();
    const Frame* const end = begin + stack.depth;
    const Frame* const found =
        std::find_if(begin, end, [start](const Frame& frame) { return frame.address == start; });
    if (found != end) {
        begin = found;
    }
    WriteFrames(begin, static_cast<std::size_t>(end - begin), &output);
}

}  // namespace wavo::platform
