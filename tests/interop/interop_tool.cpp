// Writes a recording for other readers, and dumps recordings of other writers.
//
//   interop_tool write FILE CUT_FILE    a recording, and the same without an end; prints its dump
//   interop_tool dump FILE              every line, event and other part of FILE
#include <bit>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "recording/recording_reader.h"
#include "recording/recording_writer.h"

namespace {

using namespace wavo::recording;

int Fail(const std::string& why) {
    std::fprintf(stderr, "interop_tool: %s\n", why.c_str());
    return 1;
}

void PrintLine(const LineClock& clock, std::uint64_t number, const std::vector<double>& line) {
    std::printf("line %" PRIu32 " %" PRIu64 " ", static_cast<std::uint32_t>(number),
                clock.TimeOf(number));
    for (std::size_t axis = 0; axis < line.size(); ++axis) {
        std::printf("%s%016" PRIx64, axis > 0 ? " " : "", std::bit_cast<std::uint64_t>(line[axis]));
    }
    std::printf("\n");
}

int Dump(const std::string& path) {
    auto reader = RecordingReader::Open(path);
    if (!reader) {
        return Fail(reader.Why().text);
    }
    std::vector<double> line((*reader)->Head().axis_names.size());
    for (std::uint64_t i = (*reader)->FirstLine(); i < (*reader)->EndLine(); ++i) {
        if ((*reader)->ReadLine(i, line)) {
            PrintLine((*reader)->Clock(), i, line);
        }
    }
    for (const Event& event : (*reader)->Events()) {
        std::printf("event %s %" PRIu64 " %" PRIu64 " %s\n", event.kind.c_str(), event.line,
                    event.lost, event.text.c_str());
    }
    auto metadata = ToMetadata((*reader)->Head());
    std::printf("axes %s\ncycle %s\n", metadata["axes"].c_str(), metadata["cycle_time"].c_str());
    if (const auto graph = (*reader)->ReadGraphFile()) {
        std::printf("attachment %s %s\n", graph->name.c_str(), graph->text.c_str());
    }
    for (const std::string& notice : (*reader)->Notices()) {
        std::fprintf(stderr, "%s\n", notice.c_str());
    }
    return (*reader)->Notices().empty() ? 0 : 1;
}

int Write(const std::string& path, const std::string& cut_path) {
    RecordingHead head;
    head.axis_names = {"X", "Y 2", "\xC3\x84\"", "C"};
    head.cycle_time = 0.00025;
    head.start_time = 1754056800123456789U;
    head.program = "interop";
    auto writer = RecordingWriter::Create(path, head, GraphFile{"graph.ini", "[GENERAL]"});
    if (!writer) {
        return Fail(writer.Why().text);
    }
    std::uint64_t noise = 1;
    std::vector<double> values;
    for (std::uint64_t number = 0; number < 20'000; ++number) {
        if (number == 9000) {
            number = 12'000;
            (*writer)->AddEvent({kEventOverrun, number, 3000, "a gap"});
        }
        values.clear();
        for (std::size_t axis = 0; axis < head.axis_names.size(); ++axis) {
            noise = noise * 6364136223846793005U + 1442695040888963407U;
            values.push_back(static_cast<double>(static_cast<std::int64_t>(noise)) * 1e-15);
        }
        if (const auto fault = (*writer)->Append(number, values, 1)) {
            return Fail(fault->text);
        }
    }
    (*writer)->AddEvent({kEventLinkEnded, 20'000, 0, "\xC3\xA4 \"end\""});
    if (const auto fault = (*writer)->Keep()) {
        return Fail(fault->text);
    }
    std::filesystem::copy_file(path, cut_path);
    if (const auto fault = (*writer)->Finish()) {
        return Fail(fault->text);
    }
    return Dump(path);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 3 && arguments[0] == "write") {
        return Write(arguments[1], arguments[2]);
    }
    if (arguments.size() == 2 && arguments[0] == "dump") {
        return Dump(arguments[1]);
    }
    return Fail("wrong arguments");
}
