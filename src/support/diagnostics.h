// Diagnostics: trace, error trace, error log and crash logger.
//
// The trace writes level-filtered progress messages on named channels (the program uses
// "default"). The error trace carries low-level fault messages that a caller may collect in a
// context, discard or pass on. The error log is the lasting record of faults. The crash logger
// records a crash of the process.
//
// Invariants:
// 1. A report is two calls, location first, text second; the location calls leave the last system
//    error number unchanged, so that it can be read between the two.
// 2. No call reports a failure, throws, or ends the program.
// 3. A trace statement below the channel's level costs one _MTrace_TestLevel call.
// 4. One thread (the user interface thread) makes all calls.
//
// Use the macros: they put the calls in the right order.
#pragma once

#if defined(__GNUC__) && !defined(__clang__)
// The formats of standard C, also where the system's own library has others.
#define WAVO_PRINTF(format_index, first_argument) \
    __attribute__((format(gnu_printf, format_index, first_argument)))
#elif defined(__GNUC__)
#define WAVO_PRINTF(format_index, first_argument) \
    __attribute__((format(printf, format_index, first_argument)))
#else
#define WAVO_PRINTF(format_index, first_argument)
#endif

extern "C" {

/// Sets the level of a channel: messages of this level and below are written. A channel that was
/// never set has level 1.
void _MTrace_SetLevel(const char* channel, unsigned level);
/// Non-zero when a message of `level` would be written on `channel`.
int _MTrace_TestLevel(const char* channel, unsigned level);
/// Records where the message that follows stands; non-zero when it is to be written.
int _MTrace_Location(const char* source, int line, const char* channel, unsigned level);
/// Writes a message with the location last recorded, without testing the level again.
void _MTrace_Always(const char* format, ...) WAVO_PRINTF(1, 2);

void _MErrTrace_Location(int module, const char* source, int line);
/// Adds a fault to the innermost context, or passes it on at once when none is open.
void _MErrTrace_Add(const char* format, ...) WAVO_PRINTF(1, 2);
void MErrTrace_BeginContext();
/// Closes the innermost context; what it holds goes to the enclosing one, or out.
void MErrTrace_EndContext();
/// Discards what the innermost context holds.
void MErrTrace_ClearContext();
/// Writes out what all open contexts hold, oldest first, and empties them.
void MErrTrace_Dump();

void _MErrLog_Location(int module, const char* source, int line);
void _MErrLog_Add(const char* format, ...) WAVO_PRINTF(1, 2);
}

#define MTRACE(level, ...)                                                       \
    do {                                                                         \
        if (_MTrace_TestLevel("default", (level)) != 0) {                        \
            if (_MTrace_Location(__FILE__, __LINE__, "default", (level)) != 0) { \
                _MTrace_Always(__VA_ARGS__);                                     \
            }                                                                    \
        }                                                                        \
    } while (false)

#define MERRTRACE(...)                              \
    do {                                            \
        _MErrTrace_Location(0, __FILE__, __LINE__); \
        _MErrTrace_Add(__VA_ARGS__);                \
    } while (false)

#define MERRLOG(...)                              \
    do {                                          \
        _MErrLog_Location(0, __FILE__, __LINE__); \
        _MErrLog_Add(__VA_ARGS__);                \
    } while (false)

/// Records a crash of the process in wavo_crash.log in the state folder. One global object exists,
/// in crash_logger.cpp; its destructor takes the hook's file and version back at process exit.
/// A program that wants it calls InitCrashLogger from the initialiser of a static, which also
/// links the object out of the library:
///
///   const bool crash_logger_ready = (CrashLogDLL::InitCrashLogger(), true);
class CrashLogDLL {
 public:
    /// Installs the crash logger; called during static initialisation.
    static void InitCrashLogger();
    ~CrashLogDLL();
};
