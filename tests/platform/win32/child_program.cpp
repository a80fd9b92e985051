// A program for the tests of programs that end with their parent:
//
//   child_program say             two lines, and a third without an end once its input has ended
//   child_program end             ends at once
//   child_program flood FILE      says more than anybody reads; then makes the file
//   child_program close FILE      says "up"; makes the file when it is asked to end, and does
//   child_program stay            says its number, and ends by itself never
//   child_program parent FILE     writes the number of a child that stays to the file, and stays
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/child_process.h"

namespace {

void Make(const char* path, const std::string& text = "done") {
    const std::string unfinished = std::string(path) + ".new";
    if (std::FILE* const file = std::fopen(unfinished.c_str(), "w")) {
        std::fputs(text.c_str(), file);
        std::fclose(file);
    }
    ::MoveFileA(unfinished.c_str(), path);
}

void Say(const std::string& text, std::FILE* stream = stdout) {
    std::fputs(text.c_str(), stream);
    std::fflush(stream);
}

int SayLines() {
    Say("first\n");
    Say("second\n", stderr);
    while (std::getchar() != EOF) {
    }
    Say("third");
    return 0;
}

int Flood(const char* path) {
    const std::string text(300'000, '.');
    Say(text);
    Make(path);
    return 0;
}

int AwaitRequest(const char* path) {
    MSG message;
    ::PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);  // from here on there is a queue
    Say("up\n");
    while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
        if (message.message == WM_CLOSE) {
            Make(path);
            return 0;
        }
    }
    return 1;
}

int Stay() {
    Say(std::to_string(::GetCurrentProcessId()) + "\n");
    ::Sleep(INFINITE);
    return 1;
}

int StayWithChild(const char* program, const char* path) {
    std::string error;
    const auto child = wavo::platform::ChildProcess::Start(program, {"stay"}, &error);
    if (child == nullptr) {
        Make(path, error);
        return 1;
    }
    Make(path, child->ReadLine(std::chrono::seconds(60)));
    ::Sleep(INFINITE);
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    const char* const path = argc > 2 ? argv[2] : "";
    if (what == "say") {
        return SayLines();
    }
    if (what == "flood") {
        return Flood(path);
    }
    if (what == "close") {
        return AwaitRequest(path);
    }
    if (what == "stay") {
        return Stay();
    }
    if (what == "parent") {
        return StayWithChild(argv[0], path);
    }
    return what == "end" ? 3 : 1;
}
