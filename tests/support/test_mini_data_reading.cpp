// Reading an INI file: what a line means, every error text, and files that are none.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "expect_errors.h"
#include "failing_malloc.h"
#include "faulty_files.h"
#include "support/mini_data.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace wavo {
namespace {

using diagnostics::Service;
using namespace std::string_literals;
using testing::Call;
using testing::CollectReports;
using ::testing::ElementsAre;
using testing::ExpectErrorLog;
using testing::FailingMalloc;
using testing::FaultyFiles;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class MiniDataReading : public ::testing::Test {
 protected:
    MiniDataReading() : m_path(m_folder.File("store.ini")) {}

    void Write(const std::string& content) const {
        std::ofstream(m_path, std::ios::binary) << content;
    }

    bool Open(MIniData& store, const std::string& content) const {
        Write(content);
        return store.Open(m_path);
    }

    /// The content that a file is taken in as; the last error when it is refused.
    std::string Read(const std::string& content, unsigned options = 0) const {
        MIniData store(options);
        return Open(store, content) ? store.Content() : store.LastErrorText();
    }

    static std::string Value(const MIniData& store, const std::string& section,
                             const std::string& name) {
        std::string value;
        return store.GetStringEntry(section, name, value) ? value : "(missing)";
    }

    testing::TemporaryFolder m_folder;
    const std::string m_path;
    const CollectReports m_traces{Service::kErrorTrace};
};

TEST_F(MiniDataReading, AMissingFileIsAnEmptyValidNewStore) {
    MIniData store;
    EXPECT_FALSE(store.IsValid());
    EXPECT_TRUE(store.Open(m_path));
    EXPECT_TRUE(store.IsValid());
    EXPECT_TRUE(store.IsNew());
    EXPECT_FALSE(store.IsLoaded());
    EXPECT_TRUE(store.HasNoFileContent());
    EXPECT_EQ(store.Path(), m_path);
    EXPECT_EQ(store.Content(), "");
    EXPECT_THAT(store.SectionNames(), IsEmpty());
    EXPECT_THAT(m_traces.Texts(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(m_path));
}

TEST_F(MiniDataReading, AnEmptyFileIsAnEmptyLoadedStore) {
    MIniData store;
    EXPECT_TRUE(Open(store, ""));
    EXPECT_TRUE(store.IsValid());
    EXPECT_FALSE(store.IsNew());
    EXPECT_TRUE(store.IsLoaded());
    EXPECT_FALSE(store.HasNoFileContent());
}

TEST_F(MiniDataReading, ALoadedStoreThatIsChangedIsNewButHasFileContent) {
    MIniData store;
    ASSERT_TRUE(Open(store, "[A]\nx=1\n"));
    EXPECT_FALSE(store.IsNew());
    EXPECT_TRUE(store.SetLongEntry("A", "x", 1)) << "the value it has";
    EXPECT_FALSE(store.IsNew());
    EXPECT_TRUE(store.SetLongEntry("A", "x", 2));
    EXPECT_TRUE(store.IsNew());
    EXPECT_FALSE(store.HasNoFileContent());
}

TEST_F(MiniDataReading, AStoreThatCannotBeReadIsEmptyNewAndNotValid) {
    MIniData store;
    ASSERT_TRUE(Open(store, "[A]\nx=1\n"));
    EXPECT_FALSE(Open(store, "[A]\nx=1\nrubbish\n"));
    EXPECT_FALSE(store.IsValid());
    EXPECT_TRUE(store.IsNew());
    EXPECT_FALSE(store.IsLoaded());
    EXPECT_FALSE(store.HasNoFileContent()) << "new, but not valid";
    EXPECT_EQ(store.Content(), "");
    EXPECT_FALSE(store.HasSection("A"));
    EXPECT_EQ(store.Path(), m_path);
    EXPECT_EQ(store.LastErrorText(), "No '=' found in \"rubbish\" in section A");
    store.Clear();
    EXPECT_TRUE(store.HasNoFileContent());
    EXPECT_EQ(store.Path(), m_path);
    EXPECT_EQ(store.LastErrorText(), "");
}

TEST_F(MiniDataReading, SectionsAndEntriesAreFoundByTheirNames) {
    MIniData store;
    ASSERT_TRUE(Open(store, "[A]\nx=1\ny=2\n[B]\nx=3\n[ c d ]\nlong name=4"));
    EXPECT_EQ(Value(store, "A", "x"), "1");
    EXPECT_EQ(Value(store, "A", "y"), "2");
    EXPECT_EQ(Value(store, "B", "x"), "3");
    EXPECT_EQ(Value(store, "c d", "long name"), "4");
    EXPECT_EQ(Value(store, "B", "y"), "(missing)");
    EXPECT_EQ(Value(store, "C", "x"), "(missing)");
    EXPECT_EQ(Value(store, "a", "x"), "(missing)") << "names are case-sensitive";
    EXPECT_EQ(Value(store, "A", "X"), "(missing)");
    EXPECT_THAT(store.SectionNames(), ElementsAre("A", "B", "c d"));
    EXPECT_THAT(store.EntryNames("A"), ElementsAre("x", "y"));
    EXPECT_THAT(store.EntryNames("nowhere"), IsEmpty());
    std::string value = "old";
    EXPECT_FALSE(store.GetStringEntry("A", "z", value));
    EXPECT_EQ(value, "") << "a missing entry empties the value";
    EXPECT_THAT(m_traces.Texts(), IsEmpty()) << "a missing entry is no fault";
}

TEST_F(MiniDataReading, BlanksAroundNamesAreNotPartOfThem) {
    MIniData store;
    ASSERT_TRUE(Open(store, "[\t A ]  trailing\n \tx\t =1\n"));
    EXPECT_THAT(store.SectionNames(), ElementsAre("A"));
    EXPECT_THAT(store.EntryNames("A"), ElementsAre("x"));
}

TEST_F(MiniDataReading, AValueIsWhatStandsBehindTheEqualsSign) {
    MIniData store;
    ASSERT_TRUE(
        Open(store, "[A]\na=\nb= 1 \nc=x=y\nd = 1 \t\ne\t=\t two words\nf =\ng = = \nh=\t\n"));
    EXPECT_EQ(Value(store, "A", "a"), "");
    EXPECT_EQ(Value(store, "A", "b"), " 1 ") << "as it stands";
    EXPECT_EQ(Value(store, "A", "c"), "x=y");
    EXPECT_EQ(Value(store, "A", "d"), "1") << "the = is set off, so the value is too";
    EXPECT_EQ(Value(store, "A", "e"), "two words");
    EXPECT_EQ(Value(store, "A", "f"), "");
    EXPECT_EQ(Value(store, "A", "g"), "=");
    EXPECT_EQ(Value(store, "A", "h"), "\t");
}

TEST_F(MiniDataReading, EmptyLinesAreSkippedAndLinesOfBlanksAreKept) {
    EXPECT_EQ(Read("\n\r\n \n\t\n[A]\n\n  \nx=1\n\n"), " \r\n\t\r\n[A]\r\n  \r\nx=1\r\n");
}

TEST_F(MiniDataReading, CommentsAreKeptWhereTheyStand) {
    const std::string content =
        "# one\r\n* two\r\n/ three\r\n; four\r\n \t#five\r\n[A]\r\n;x=1\r\n  // x\r\nx=1 ;no "
        "comment\r\n";
    EXPECT_EQ(Read(content), content);
    MIniData store;
    ASSERT_TRUE(Open(store, content));
    EXPECT_THAT(store.EntryNames("A"), ElementsAre("x"));
    EXPECT_EQ(Value(store, "A", "x"), "1 ;no comment");
}

TEST_F(MiniDataReading, ABracketBeginsASectionOnlyAsTheFirstCharacter) {
    EXPECT_EQ(Read("[A]\n [B]\n"), "No '=' found in \" [B]\" in section A");
    EXPECT_EQ(Read(" [A]\n"), "Possible entry \" [A]\" found before first section");
    EXPECT_EQ(Read("[A]\n [B]=1\n"), "[A]\r\n [B]=1\r\n");
}

TEST_F(MiniDataReading, WhatFollowsTheHeaderOfASectionIsKept) {
    MIniData store;
    ASSERT_TRUE(Open(store, "[A] ; the first]\nx=1\n"));
    EXPECT_TRUE(store.HasSection("A"));
    EXPECT_EQ(store.Content(), "[A] ; the first]\r\nx=1\r\n");
}

TEST_F(MiniDataReading, AHeaderWithoutItsEndIsAnError) {
    EXPECT_EQ(Read("[A\n"), "no matching ']' found in \"[A\"");
    EXPECT_EQ(Read("[" + std::string(100, 'x')),
              "no matching ']' found in \"[" + std::string(49, 'x') + "\"");
}

TEST_F(MiniDataReading, AnEntryBeforeTheFirstSectionIsAnError) {
    EXPECT_EQ(Read("; comment\nx=1\n[A]\n"), "Possible entry \"x=1\" found before first section");
    EXPECT_EQ(Read("hello"), "Possible entry \"hello\" found before first section");
    EXPECT_EQ(Read("hello", MIniData::kLenientEntries),
              "Possible entry \"hello\" found before first section");
}

TEST_F(MiniDataReading, AnErrorIsTracedByTheLineAndByOpen) {
    EXPECT_EQ(Read("[A]\n" + std::string(100, 'y')),
              "No '=' found in \"" + std::string(50, 'y') + "\" in section A");
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre("MIniData::parse_line(): No '=' found in \"" + std::string(50, 'y') + "\" i",
                    "MIniData::Open(): parse_line(" + std::string(60, 'y') + ") failed"));
}

TEST_F(MiniDataReading, EntriesNeedAnEqualsSignAndAName) {
    EXPECT_EQ(Read("[S 1]\nx\n"), "No '=' found in \"x\" in section S 1");
    EXPECT_EQ(Read("[S]\n=1\n"), "No entry name found before '=' in \"=1\" in section S");
    EXPECT_EQ(Read("[S]\n \t=1\n"), "No entry name found before '=' in \" \t=1\" in section S");
}

TEST_F(MiniDataReading, LenientStoresKeepLinesWithoutEqualsSignOrName) {
    for (const unsigned option : {MIniData::kLenientEntries, MIniData::kReplaceSections}) {
        MIniData store(option);
        ASSERT_TRUE(Open(store, "[A]\n  just a name \n=1\n=2\n"));
        EXPECT_EQ(store.Content(), "[A]\r\n  just a name \r\n=1\r\n=2\r\n");
        EXPECT_THAT(store.EntryNames("A"), ElementsAre("just a name"));
        EXPECT_EQ(Value(store, "A", "just a name"), "");
        EXPECT_TRUE(store.SetStringEntry("A", "just a name", "now"));
        EXPECT_EQ(store.Content(), "[A]\r\njust a name=now\r\n=1\r\n=2\r\n");
    }
    EXPECT_THAT(Read("[A]\nx\n", MIniData::kReplaceEntries), StartsWith("No '=' found"));
}

TEST_F(MiniDataReading, ASectionSeenTwiceIsAnErrorUnlessItReplaces) {
    const std::string content = "[A]\nx=1\n;gone\n[B]\nx=2\n[A]\ny=3\n";
    EXPECT_EQ(Read(content), "Section [A] seen twice");
    EXPECT_EQ(Read(content, MIniData::kLenientEntries), "Section [A] seen twice");
    MIniData store(MIniData::kReplaceSections);
    ASSERT_TRUE(Open(store, content));
    EXPECT_EQ(Value(store, "A", "x"), "(missing)");
    EXPECT_EQ(Value(store, "A", "y"), "3");
    EXPECT_EQ(store.Content(), "[B]\r\nx=2\r\n[A]\r\ny=3\r\n");
    EXPECT_EQ(Read("[A]\nx=1\n[A]\nx=2\n[A]\nz=1\n", MIniData::kReplaceSections), "[A]\r\nz=1\r\n");
}

TEST_F(MiniDataReading, AnEntrySeenTwiceIsAnErrorUnlessItReplaces) {
    const std::string content = "[A]\nx=1\ny=2\n x =3\n[B]\nx=4\n";
    EXPECT_EQ(Read(content), "Entry \"x\" seen twice in section A");
    EXPECT_EQ(Read(content, MIniData::kReplaceSections), "Entry \"x\" seen twice in section A");
    MIniData store(MIniData::kReplaceEntries);
    ASSERT_TRUE(Open(store, content));
    EXPECT_EQ(Value(store, "A", "x"), "3");
    EXPECT_EQ(Value(store, "B", "x"), "4");
    EXPECT_EQ(store.Content(), "[A]\r\ny=2\r\n x =3\r\n[B]\r\nx=4\r\n");
}

TEST_F(MiniDataReading, ManyEntriesAndSectionsAreFoundAndTheirDoublesToo) {
    std::string content;
    for (int section = 0; section < 300; ++section) {
        content += "[s" + std::to_string(section) + "]\r\n";
        for (int entry = 0; entry < (section == 7 ? 5000 : 20); ++entry) {
            content +=
                "name" + std::to_string(entry) + "=" + std::to_string(section * entry) + "\r\n";
        }
    }
    MIniData store;
    ASSERT_TRUE(Open(store, content));
    EXPECT_EQ(store.Content(), content);
    for (int section = 299; section >= 0; --section) {
        for (int entry = 0; entry < 20; ++entry) {
            ASSERT_EQ(Value(store, "s" + std::to_string(section), "name" + std::to_string(entry)),
                      std::to_string(section * entry));
        }
    }
    EXPECT_EQ(Value(store, "s7", "name4999"), std::to_string(7 * 4999));
    EXPECT_EQ(Value(store, "s7", "name5000"), "(missing)");
    EXPECT_EQ(Read(content + "name0=1\nname0=2"), "Entry \"name0\" seen twice in section s299");
    EXPECT_EQ(Read(content + "[s5]"), "Section [s5] seen twice");
}

TEST_F(MiniDataReading, WideUnicodeFilesAreRefused) {
    for (const std::string& mark : {"\xFF\xFE\0\0"s, "\0\0\xFE\xFF"s, "\xFF\xFE"s, "\xFE\xFF"s}) {
        EXPECT_EQ(Read(mark + "[A]\nx=1\n"), "UTF16/32 Unicode format not supported.");
    }
    const std::string trace =
        "MIniData::Open(\"" + m_path.substr(0, 80) + "\"): UTF16/32 Unicode format not supported";
    EXPECT_THAT(m_traces.Texts(), ElementsAre(trace, trace, trace, trace));
}

TEST_F(MiniDataReading, MarksCountAtTheBeginOfTheFileOnly) {
    EXPECT_EQ(Read("\n\xFF\xFE"), "Possible entry \"\xFF\xFE\" found before first section");
    EXPECT_EQ(Read("\n\xEF\xBB\xBF[A]"),
              "Possible entry \"\xEF\xBB\xBF[A]\" found before first section");
}

TEST_F(MiniDataReading, TheUtf8MarkIsRemovedAndTheLineReadOn) {
    EXPECT_EQ(Read("\xEF\xBB\xBF[A]\nx=1\n"), "[A]\r\nx=1\r\n");
    EXPECT_EQ(Read("\xEF\xBB\xBF;c\r\n[A]\r\nx=\xC3\xA4\r\n"), ";c\r\n[A]\r\nx=\xC3\xA4\r\n");
    EXPECT_EQ(Read("\xEF\xBB\xBF\n[A]"), "[A]\r\n");
    EXPECT_EQ(Read("\xEF\xBB\xBF"), "");
    EXPECT_EQ(Read("\xEF\xBB"), "Possible entry \"\xEF\xBB\" found before first section");
}

TEST_F(MiniDataReading, AFolderFailsToOpen) {
    const std::string number = std::to_string(testing::kIsAFolder);
    ASSERT_TRUE(std::filesystem::create_directory(m_path));
    MIniData store;
    EXPECT_FALSE(store.Open(m_path));
    EXPECT_FALSE(store.IsValid());
    EXPECT_TRUE(store.IsNew());
    EXPECT_THAT(
        m_traces.Texts(),
        ElementsAre("openfile(): CreateFile(\"" + m_path + "\") failed: " + number,
                    "MFastFileReader::Open(): openfile(\"" + m_path + "\") failed: " + number,
                    "MIniData::Open(): MFastFileReader::Open() failed"));
    EXPECT_EQ(store.LastErrorText(),
              "MFastFileReader::Open() failed: " + platform::ErrorText(testing::kIsAFolder));
}

TEST_F(MiniDataReading, AReadThatFailsInALineFailsToOpen) {
    FaultyFiles files;
    files.Fail(Call::kRead, EIO, 1);
    MIniData store;
    EXPECT_FALSE(Open(store, "[A]\nx=" + std::string(20000, '1')));
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("read64(): ReadFile() failed: 5",
                            "MFastFileReader::fill_buffer(): read64() failed",
                            "MFastFileReader::ReadLine(STL): fill_buffer() failed",
                            "MIniData::Open(): MFastFileReader::ReadLine() failed"));
    EXPECT_EQ(store.LastErrorText(),
              "MFastFileReader::ReadLine() failed: " + platform::ErrorText(EIO));
}

TEST_F(MiniDataReading, AReadThatFailsBetweenLinesIsNotTakenForTheEndOfTheFile) {
    const ExpectErrorLog expected({"MFastFileReader::IsEOF(): fill_buffer() failed"});
    FaultyFiles files;
    files.LimitReads(4);
    files.Fail(Call::kRead, EIO, 1);
    MIniData store;
    EXPECT_FALSE(Open(store, "[A]\nx=1\n")) << "saving it would lose the entry";
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MIniData::Open(): MFastFileReader::ReadLine() failed"));
    EXPECT_FALSE(store.IsValid());
}

TEST_F(MiniDataReading, TheErrorOfALineComesBeforeThatOfALaterRead) {
    FaultyFiles files;
    files.Fail(Call::kRead, EIO, 1);
    EXPECT_EQ(Read("[A]\nrubbish\n" + std::string(20000, '1')),
              "No '=' found in \"rubbish\" in section A");
}

TEST_F(MiniDataReading, AHundredMegabytesOfOneLineAreRefusedAtItsBegin) {
    const std::string part(std::size_t{1} << 20, 'x');
    std::ofstream file(m_path, std::ios::binary);
    for (int i = 0; i < 100; ++i) {
        file << part;
    }
    file.close();
    // The file is never held: no memory for more than a small part of it is asked for.
    const FailingMalloc no_memory(MIniData::kLargestFile * 2);
    MIniData store;
    EXPECT_FALSE(store.Open(m_path));
    EXPECT_EQ(no_memory.failed(), 0);
    EXPECT_THAT(store.LastErrorText(), StartsWith("Possible entry \"xxxxx"));
    EXPECT_LE(store.LastErrorText().size(), MIniData::kLongestLine + 100);
    EXPECT_THAT(m_traces.Texts(),
                ElementsAre("MIniData::parse_line(): Possible entry \"" + std::string(54, 'x'),
                            "MIniData::Open(): parse_line(" + std::string(60, 'x') + ") failed"));
}

TEST_F(MiniDataReading, ALineThatIsTooLongIsRefusedWhateverItIs) {
    const std::string part(MIniData::kLongestLine, 'x');
    EXPECT_EQ(Read(";" + part), "line longer than 1048576 bytes: \";" + part.substr(0, 49) + "\"");
    EXPECT_THAT(Read("[A]\nx=" + part), StartsWith("line longer than 1048576 bytes: \"x=xx"));
    EXPECT_THAT(Read("[" + part + "]"), StartsWith("no matching ']' found"));
    EXPECT_THAT(Read("[A]\n" + part + "="), StartsWith("No '=' found"));
    EXPECT_EQ(Read(";" + part.substr(1)), ";" + part.substr(1) + "\r\n") << "the longest line";
}

TEST_F(MiniDataReading, AFileThatIsTooLargeIsRefused) {
    std::string content = "[A]\n";
    while (content.size() <= MIniData::kLargestFile) {
        content += ";" + std::string(999, 'c') + "\n";
    }
    EXPECT_EQ(Read(content), "more than 16777216 bytes");
    EXPECT_EQ(Read(std::string(MIniData::kLargestFile + 2, '\n')), "more than 16777216 bytes");
}

TEST_F(MiniDataReading, BinaryFilesAreRefusedAtTheirFirstLine) {
    EXPECT_EQ(Read("\x7F"
                   "ELF\x02\x01\x01"s +
                   std::string(1000, '\0')),
              "Possible entry \"\x7F"
              "ELF\x02\x01\x01\" found before first section");
    EXPECT_EQ(Read(std::string(100000, '\0')), "Possible entry \"\" found before first section");
    EXPECT_EQ(Read("[A]\n"s + std::string(100, '\0') + "\n"), "No '=' found in \"\" in section A");
}

TEST_F(MiniDataReading, NulsInValuesAndCommentsAreKept) {
    const std::string content = "; a\0b\r\n[A\0B]\r\nx\0y=1\0002\r\n"s;
    EXPECT_EQ(Read(content), content);
    MIniData store;
    ASSERT_TRUE(Open(store, content));
    EXPECT_EQ(Value(store, "A\0B"s, "x\0y"s), "1\0002"s);
}

TEST_F(MiniDataReading, RunningOutOfMemoryIsAnErrorWhereverItHappens) {
    std::string content = "; c\n[A]\n";
    for (int i = 0; i < 3000; ++i) {
        content += "name" + std::to_string(i) + "=1\n";
    }
    content += "[B]\n";
    for (int i = 0; i < 3000; ++i) {
        content += ";\n[" + std::to_string(i) + "]\n";
    }
    Write(content);
    int refused = 0;
    for (int passed = 0; passed < 100; ++passed) {
        MIniData store;
        const FailingMalloc no_memory(1000, std::size_t{1} << 26, passed);
        const bool is_open = store.Open(m_path);
        ASSERT_EQ(is_open, no_memory.failed() == 0) << passed;
        if (is_open) {
            break;
        }
        ++refused;
        EXPECT_THAT(store.LastErrorText(), StartsWith("out of memory ("));
        EXPECT_EQ(store.Content(), "");
        EXPECT_FALSE(store.IsValid());
    }
    EXPECT_GT(refused, 5);
}

TEST_F(MiniDataReading, RunningOutOfMemoryNamesWhatThereWasNoMemoryFor) {
    const auto texts_with = [&](const std::string& content, std::size_t smallest,
                                std::size_t largest) {
        Write(content);
        const CollectReports traces(Service::kErrorTrace);
        const FailingMalloc no_memory(smallest, largest);
        MIniData store;
        EXPECT_FALSE(store.Open(m_path));
        return traces.Texts();
    };
    // The first block of the store's lines, and the first index.
    EXPECT_THAT(texts_with("; comment\n", 4096, 4097),
                ElementsAre("MIniData::parse_line(): new MIniDataLine() failed: " +
                                platform::ErrorText(ENOMEM),
                            "MIniData::parse_line(): out of memory (; comment)",
                            "MIniData::Open(): parse_line(; comment) failed"));
    EXPECT_THAT(texts_with("[A]\nx=1\n", 4096, 4097),
                ElementsAre("MIniData::parse_line(): new MIniDataSectionT() failed: " +
                                platform::ErrorText(ENOMEM),
                            "MIniData::parse_line(): out of memory ([A])",
                            "MIniData::Open(): parse_line([A]) failed"));
    Write("[A]\nx=1\n");
    const CollectReports traces(Service::kErrorTrace);
    const FailingMalloc no_memory(1024, 1025, 1);
    MIniData store;
    EXPECT_FALSE(store.Open(m_path));
    EXPECT_THAT(traces.Texts(), ElementsAre("MIniData::parse_line(): new MIniDataEntry() failed: " +
                                                platform::ErrorText(ENOMEM),
                                            "MIniData::parse_line(): out of memory (x=1)",
                                            "MIniData::Open(): parse_line(x=1) failed"));
}

}  // namespace
}  // namespace wavo
