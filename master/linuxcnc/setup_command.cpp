#include "master/linuxcnc/setup_command.h"

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>

#include "master/linuxcnc/machine.h"
#include "master/linuxcnc/wiring.h"
#include "platform/last_error.h"
#include "platform/posix/program_output.h"
#include "support/fast_file.h"

namespace wavo::master {

namespace {

constexpr char kWiringFile[] = "wavo.hal";

/// The value of --pins as the program started by the controller needs it: files with their folder.
std::string LastingPins(const std::string& given) {
    const bool is_file = given.starts_with('@') || given.starts_with("+@");
    if (!is_file) {
        return given;
    }
    const auto at = given.find('@');
    std::error_code error;
    const auto path = std::filesystem::absolute(given.substr(at + 1), error);
    return given.substr(0, at + 1) + path.string();
}

std::optional<std::string> WiringOf(const LinuxcncOptions& options, std::string* error) {
    const std::optional<Machine> machine = Machine::Find(options.setup, options.pins, error);
    if (!machine) {
        return std::nullopt;
    }
    std::string why_not_wired;
    auto channels = machine->WiredChannels(&why_not_wired);
    if (!channels) {
        channels = ShareOut(machine->pins, FirstChannel(machine->hal), error);
    }
    if (!channels) {
        return std::nullopt;
    }
    std::error_code ignored;
    const WiringText text{std::filesystem::absolute(options.setup, ignored).string(),
                          platform::ProgramPath(), LastingPins(options.pins)};
    return MakeWiring(*channels, machine->hal, text, error);
}

/// False when there is a file of this name that we have not made.
bool MayWrite(const std::string& path) {
    const std::optional<std::string> there = ReadTextFile(path);
    return there ? there->starts_with(kWiringMark) : !std::filesystem::exists(path);
}

}  // namespace

int SetUp(const LinuxcncOptions& options) {
    std::string error;
    const std::optional<std::string> wiring = WiringOf(options, &error);
    const std::string path = FolderOf(options.setup) + kWiringFile;
    if (wiring && !options.write) {
        std::fputs(wiring->c_str(), stdout);
        return 0;
    }
    if (wiring && !MayWrite(path)) {
        error = path + " is not one that this program has made; it stays as it is";
    } else if (wiring &&
               !MFastFile_WriteAtOnce(path, wiring->data(), wiring->size(), kWriteOverwrite)) {
        error = "cannot write " + path + ": " + platform::ErrorText(platform::LastError());
    }
    if (!wiring || !error.empty()) {
        std::fprintf(stderr, "wavo_linuxcnc: %s\n", error.c_str());
        return 1;
    }
    std::printf(
        "Written: %s\nAdd this line to section [HAL] of %s, behind the other HALFILE lines, and "
        "start LinuxCNC anew:\nHALFILE = %s\n",
        path.c_str(), options.setup.c_str(), kWiringFile);
    return 0;
}

}  // namespace wavo::master
