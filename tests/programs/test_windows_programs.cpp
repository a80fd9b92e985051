// The programs as Windows sees them: what their files tell of them, their arguments, where their
// words go, and files of long paths and of names that it keeps for itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QXmlStreamReader>
#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/file_name.h"
#include "platform/win32/wide.h"
#include "support/mini_data.h"
#include "support/temporary_folder.h"
#include "system/started_program.h"

// Last: it gives names of ours a second meaning.
#include <windows.h>

namespace wavo {
namespace {

using platform::Utf8;
using platform::Wide;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr char kRecordings[] = WAVO_RECORDINGS;

struct Program {
    const char* name;
    const char* path;
    bool has_windows = false;
};
constexpr std::array<Program, 5> kPrograms{{{"wavo", WAVO_VIEWER, true},
                                            {"wavo_record", WAVO_RECORD},
                                            {"wavo_report", WAVO_REPORT},
                                            {"demo_master", WAVO_DEMO_MASTER},
                                            {"wavo_pipe", WAVO_PIPE}}};

struct Ended {
    int code = -1;
    std::string output;
    std::string errors;
};

Ended Started(const char* path, const std::vector<std::string>& arguments) {
    testing::StartedProgram program(path, arguments);
    Ended ended;
    ended.code = program.Wait();
    ended.output = program.Output();
    ended.errors = program.Errors();
    return ended;
}

/// A resource of a program's file; empty when it has none of the kind.
std::string ResourceOf(const Program& program, const wchar_t* kind) {
    HMODULE const file =
        ::LoadLibraryExW(Wide(program.path).c_str(), nullptr,
                         LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    EXPECT_NE(file, nullptr) << program.path;
    std::string content;
    if (HRSRC const found = ::FindResourceW(file, MAKEINTRESOURCEW(1), kind); found != nullptr) {
        content.assign(static_cast<const char*>(::LockResource(::LoadResource(file, found))),
                       ::SizeofResource(file, found));
    }
    ::FreeLibrary(file);
    return content;
}

/// What a manifest says: texts of its elements, and its attributes as "element attribute".
std::multimap<std::string, std::string> SaidBy(const std::string& manifest) {
    std::multimap<std::string, std::string> said;
    QXmlStreamReader reader(QByteArray::fromStdString(manifest));
    std::string element;
    while (!reader.atEnd()) {
        reader.readNext();
        if (reader.isStartElement()) {
            element = reader.name().toString().toStdString();
            for (const QXmlStreamAttribute& attribute : reader.attributes()) {
                said.emplace(element + ' ' + attribute.name().toString().toStdString(),
                             attribute.value().toString().toStdString());
            }
        } else if (reader.isCharacters() && !reader.isWhitespace()) {
            said.emplace(element, reader.text().toString().toStdString());
        }
    }
    EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    return said;
}

TEST(Manifest, OfEveryProgramAllowsLongPathsAndAsksForNoMoreRights) {
    for (const Program& program : kPrograms) {
        const auto said = SaidBy(ResourceOf(program, MAKEINTRESOURCEW(24)));  // a manifest
        const auto says = [&said](const char* what, const char* value) {
            const auto [first, end] = said.equal_range(what);
            return std::any_of(first, end,
                               [value](const auto& one) { return one.second == value; });
        };
        EXPECT_TRUE(says("longPathAware", "true")) << program.name;
        EXPECT_TRUE(says("supportedOS Id", "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"))
            << program.name << ": Windows 10 and 11";
        EXPECT_TRUE(says("requestedExecutionLevel level", "asInvoker")) << program.name;
        EXPECT_EQ(says("assemblyIdentity name", "Microsoft.Windows.Common-Controls"),
                  program.has_windows)
            << program.name;
        EXPECT_EQ(said.count("activeCodePage"), 0U) << program.name << ": texts go as UTF-16";
    }
}

TEST(VersionData, NamesEveryProgramAndItsVersion) {
    for (const Program& program : kPrograms) {
        const std::wstring path = Wide(program.path);
        DWORD unused = 0;
        std::vector<std::byte> data(::GetFileVersionInfoSizeW(path.c_str(), &unused));
        ASSERT_NE(
            ::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(data.size()), data.data()), 0)
            << program.name;
        const auto entry = [&data](const wchar_t* name) {
            void* text = nullptr;
            UINT length = 0;
            ::VerQueryValueW(data.data(),
                             (std::wstring(L"\\StringFileInfo\\040904b0\\") + name).c_str(), &text,
                             &length);
            return text == nullptr ? std::string() : Utf8(static_cast<const wchar_t*>(text));
        };
        EXPECT_EQ(entry(L"OriginalFilename"), std::string(program.name) + ".exe");
        EXPECT_EQ(entry(L"ProductVersion"), WAVO_VERSION) << program.name;
        EXPECT_FALSE(ResourceOf(program, MAKEINTRESOURCEW(14)).empty()) << "icon: " << program.name;
    }
}

TEST(Arguments, OfAnyCharactersComeAsTheyWere) {
    const testing::TemporaryFolder folder;
    const std::string name = "\xE6\x97\xA5\xE6\x9C\xAC \xD0\xB6\xC3\xA4 \xF0\x9D\x84\x9E.mcap";
    EXPECT_THAT(Started(WAVO_RECORD, {"--verify", name}).errors, HasSubstr(name));
    EXPECT_THAT(Started(WAVO_REPORT, {"circle", name}).errors, HasSubstr(name));
    EXPECT_THAT(Started(WAVO_DEMO_MASTER, {"--recording", name}).errors, HasSubstr(name));
    EXPECT_THAT(Started(WAVO_PIPE, {name}).errors, HasSubstr(name));
    EXPECT_THAT(Started(WAVO_VIEWER, {"graphs.ini", name + ".ini"}).errors, HasSubstr(name));
}

TEST(Names, OfDevicesAreToldInWordsWhereAFileWouldBeMade) {
    const std::string circle = std::string(WAVO_MEASURE_DATA) + "/circle_errors.csv.gz";
    for (const char* const option : {"--out", "--json"}) {
        const Ended ended = Started(WAVO_REPORT, {"circle", circle, option, "COM1.pdf"});
        EXPECT_EQ(ended.code, 2);
        EXPECT_EQ(
            ended.errors,
            "wavo_report: COM1.pdf: cannot be written: Windows keeps this name for a device\n");
    }
    EXPECT_EQ(
        Started(WAVO_REPORT, {"circle", circle, "--out", "a.pdf."}).errors,
        "wavo_report: a.pdf.: cannot be written: on Windows the name of a file cannot end with "
        "a dot or a blank\n");
    const Ended read = Started(WAVO_REPORT, {"circle", "CON.csv"});
    EXPECT_EQ(read.code, 2);
    EXPECT_EQ(read.errors,
              "wavo_report: CON.csv: cannot be read: Windows keeps this name for a device\n");
    const Ended picture = Started(WAVO_VIEWER, {std::string(kRecordings) + "/helix_4axis.csv.gz",
                                                "--cycle", "0.001", "--screenshot", "NUL.png"});
    EXPECT_EQ(picture.code, 1);
    EXPECT_THAT(picture.errors,
                HasSubstr("wavo: cannot write NUL.png: Windows keeps this name for a device\n"));
}

TEST(Names, OfDevicesAreToldOfRecordings) {
    testing::StartedProgram master(WAVO_DEMO_MASTER, {"--motion", "circle", "--wait-viewer"});
    ASSERT_TRUE(master.WaitForOutput("axes")) << master.Errors();
    const testing::TemporaryFolder folder;
    const Ended ended = Started(WAVO_RECORD, {"--out", folder.File("nul"), "--lines", "10"});
    EXPECT_EQ(ended.code, 1);
    EXPECT_THAT(ended.errors, HasSubstr("cannot make \"" + folder.File("nul.mcap") +
                                        "\": Windows keeps this name for a device"));
}

TEST(Names, OfDevicesAreToldOfGraphFiles) {
    const testing::TemporaryFolder folder;
    for (const unsigned flags : {0U, MIniData::kSaveFlush | MIniData::kSaveSafe}) {
        MIniData store(flags);
        store.Open(folder.File("aux.ini"));
        ASSERT_TRUE(store.SetLongEntry("GENERAL", "Graphs", 1));
        EXPECT_FALSE(store.Save());
        EXPECT_EQ(store.LastErrorText(),
                  "MFastFile_WriteLinesAtOnce() failed: Windows keeps this name for a device");
    }
}

TEST(LongPaths, AreReadAndWrittenByReports) {
    const testing::TemporaryFolder folder;
    std::vector<std::wstring> made;
    std::wstring path = L"\\\\?\\" + Wide(folder.path());
    for (int i = 0; i < 6; ++i) {
        path += L'\\';
        path.append(60, L'x');
        ASSERT_NE(::CreateDirectoryW(path.c_str(), nullptr), 0);
        made.push_back(path);
    }
    const std::string inside = Utf8(path.substr(4)) + "\\";
    const std::string table = inside + "circle.csv.gz";
    ASSERT_NE(::CopyFileW(Wide(std::string(WAVO_MEASURE_DATA) + "/circle_errors.csv.gz").c_str(),
                          platform::WidePath(table).c_str(), TRUE),
              0);
    const Ended ended = Started(
        WAVO_REPORT, {"circle", table, "--out", inside + "c.pdf", "--json", inside + "c.json"});
    EXPECT_EQ(ended.code, 0) << ended.errors;
    for (const char* const name : {"c.pdf", "c.json", "circle.csv.gz"}) {
        EXPECT_NE(::DeleteFileW(platform::WidePath(inside + name).c_str()), 0) << name;
    }
    for (; !made.empty(); made.pop_back()) {
        EXPECT_NE(::RemoveDirectoryW(made.back().c_str()), 0);
    }
}

/// A console of this process, for programs that it starts; what they write is read off its screen.
/// It stays until the process ends. The process' own streams lead where they led, also when it is
/// asked for them; to what it starts without streams it hands on none, as consoles do.
class Console {
 public:
    static const Console& Get() {
        static const Console& console = *new Console;
        return console;
    }

    [[nodiscard]] bool IsThere() const { return m_is_there && m_screen != INVALID_HANDLE_VALUE; }

    /// Its lines, without blanks behind them and without empty ones.
    [[nodiscard]] std::vector<std::string> Lines() const {
        CONSOLE_SCREEN_BUFFER_INFO info{};
        ::GetConsoleScreenBufferInfo(m_screen, &info);
        std::vector<std::string> lines;
        for (SHORT y = 0; y <= info.dwCursorPosition.Y; ++y) {
            std::wstring line(static_cast<std::size_t>(info.dwSize.X), L'\0');
            DWORD count = 0;
            ::ReadConsoleOutputCharacterW(m_screen, line.data(), static_cast<DWORD>(line.size()),
                                          {0, y}, &count);
            line.resize(count);
            line.erase(line.find_last_not_of(std::wstring_view(L" \0", 2)) + 1);
            if (!line.empty()) {
                lines.push_back(Utf8(line));
            }
        }
        return lines;
    }

 private:
    Console() {
        ::FreeConsole();
        m_is_there = ::AllocConsole() != 0;
        m_screen =
            ::CreateFileW(L"CONOUT$", GENERIC_READ | GENERIC_WRITE,
                          FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
        for (const DWORD stream : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
            ::SetStdHandle(stream, nullptr);
        }
    }

    bool m_is_there = false;
    HANDLE m_screen = INVALID_HANDLE_VALUE;
};

/// Starts the viewer as a console does that hands on no streams, but perhaps an output; returns its
/// exit status.
DWORD StartedAtConsole(const std::string& arguments, HANDLE output = nullptr) {
    std::wstring command = L'"' + Wide(WAVO_VIEWER) + L"\" " + Wide(arguments);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    if (output != nullptr) {
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = output;
    }
    PROCESS_INFORMATION process{};
    EXPECT_NE(
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr,
                         output != nullptr ? TRUE : FALSE, 0, nullptr, nullptr, &start, &process),
        0);
    EXPECT_EQ(::WaitForSingleObject(process.hProcess, 30000), WAIT_OBJECT_0);
    DWORD status = 0;
    ::GetExitCodeProcess(process.hProcess, &status);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return status;
}

TEST(WordsOfTheViewer, ReachTheConsoleThatStartedIt) {
    const Console& console = Console::Get();
    ASSERT_TRUE(console.IsThere());
    EXPECT_EQ(StartedAtConsole("--version"), 0U);
    EXPECT_THAT(console.Lines(), Contains("Wavo " WAVO_VERSION));
    EXPECT_EQ(StartedAtConsole("--nonsense-\xC3\xA4"), 2U);
    EXPECT_THAT(console.Lines(), Contains("wavo: Unknown option 'nonsense-\xC3\xA4'."));
}

TEST(WordsOfTheViewer, GoWhereTheyWereLed) {
    const Console& console = Console::Get();
    ASSERT_TRUE(console.IsThere());
    const testing::TemporaryFolder folder;
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE const file = ::CreateFileW(Wide(folder.File("out.txt")).c_str(), GENERIC_WRITE, 0,
                                      &inherited, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_EQ(StartedAtConsole("--help", file), 0U);
    // Its errors were led nowhere: they come to the console all the same.
    EXPECT_EQ(StartedAtConsole("--after-lines many", file), 2U);
    ::CloseHandle(file);
    EXPECT_THAT(folder.Read("out.txt"), StartsWith("Usage: wavo [options]"));
    EXPECT_THAT(folder.Read("out.txt"), Not(HasSubstr("needs a number")));
    EXPECT_THAT(console.Lines(), Contains("wavo: --after-lines needs a number"));
    EXPECT_THAT(console.Lines(), Not(Contains(HasSubstr("Usage:"))));
}

TEST(WordsOfTheViewer, GoThroughPipes) {
    const Ended help = Started(WAVO_VIEWER, {"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_THAT(help.output, StartsWith("Usage: wavo [options]"));
    EXPECT_THAT(help.errors, IsEmpty());
    const Ended refused = Started(WAVO_VIEWER, {"--after-lines", "many"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_THAT(refused.output, IsEmpty());
    EXPECT_EQ(refused.errors, "wavo: --after-lines needs a number\n");
}

}  // namespace
}  // namespace wavo
