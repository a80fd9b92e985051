// What files and INI stores report to the error log, to the error trace and to the user, where
// others rely on the words: service tools search logs for them. They stay byte for byte; names in
// them may be those of a former time.
#pragma once

#include <string>

namespace wavo::support_texts {

// The error log.
inline constexpr char kEndWithoutFile[] = "MFastFileReader::IsEOF(): no open file";
inline constexpr char kEndNotRead[] = "MFastFileReader::IsEOF(): fill_buffer() failed";

// The error trace.
inline constexpr char kFileNotOpened[] = "openfile(): CreateFile(\"%s\") failed: %d";
inline constexpr char kReadFailed[] = "%s(): ReadFile() failed: %u";
inline constexpr char kReaderNotClosed[] = "MFastFileReader::~MFastFileReader(): Close() failed";
inline constexpr char kReaderNotOpened[] = "MFastFileReader::Open(): openfile(\"%s\") failed: %d";
inline constexpr char kReaderCloseFailed[] = "MFastFileReader::Close(): CloseHandle() failed: %d";
inline constexpr char kBufferNotFilled[] = "MFastFileReader::fill_buffer(): read64() failed";
inline constexpr char kLineFeedNotRead[] = "MFastFileReader::ReadLine(STL):fill_buffer() failed";
inline constexpr char kLineNotRead[] = "MFastFileReader::ReadLine(STL): fill_buffer() failed";
inline constexpr char kNoTemporaryName[] = "MFastFile_WriteAtOnce(): malloc() failed";
inline constexpr char kNoTemporaryFile[] = "MFastFile_WriteAtOnce(): GetTempFileName() failed:%u";
inline constexpr char kNotWritten[] = "%s(): write64() failed";
inline constexpr char kFlushFailed[] = "%s(): FlushFileBuffers() failed: %u";
inline constexpr char kCloseFailed[] = "%s(): CloseHandle() failed: %u";
inline constexpr char kUnknownWriteMode[] = "openwritefile(): unknown mode %d for %s";
inline constexpr char kCreateFailed[] = "%s(): CreateFile(%s, ...) failed: %u";
inline constexpr char kWriteFailed[] = "%s(): WriteFile() failed: %u";
inline constexpr char kRenameFailed[] = "file_rename(): MoveFileEx(%s,%s) failed: %u";
inline constexpr char kNotOpenedForWriting[] = "%s(): openwritefile(%s, %d) failed";
inline constexpr char kNotRenamed[] = "MFastFile_WriteAtOnce(): file_rename(%s,%s) failed: %s";
inline constexpr char kNoMemoryForLines[] =
    "MFastFile_WriteLinesAtOnce(): malloc(%zu) failed: %.50s";
inline constexpr char kLinesNotWritten[] =
    "MFastFile_WriteLinesAtOnce(): MFastFile_WriteAtOnce(\"%s\",..,%zu,%d) failed";
inline constexpr char kStoreNotOpened[] = "MIniData::Open(): MFastFileReader::Open() failed";
inline constexpr char kStoreNotRead[] = "MIniData::Open(): MFastFileReader::ReadLine() failed";
inline constexpr char kLineNotParsed[] = "%s: parse_line(%.60s) failed";
inline constexpr char kWideText[] = "%.*s\"%.80s\"): UTF16/32 Unicode format not supported";
inline constexpr char kParseFailed[] = "MIniData::parse_line(): %.70s";
inline constexpr char kParseNoMemory[] = "MIniData::parse_line(): new %s() failed: %.50s";
inline constexpr char kStoreNotSaved[] =
    "MIniData::Save(): MFastFile_WriteLinesAtOnce(\"%.40s\") failed";
inline constexpr char kNoNewSection[] = "MIniData::%s(): add_new_section() failed";
inline constexpr char kNoNewEntry[] = "MIniDataSectionT::%s(): add_new_entry() failed";
inline constexpr char kSectionNotFound[] = "MIniData::DeleteEntry(): %s";
inline constexpr char kEntryNotDeleted[] =
    "MIniData::DeleteEntry(): MIniDataSectionT::DeleteEntry() failed (\"%.30s\",\"%.30s\")";

// What is wrong with a line of an INI file.
inline std::string NoHeaderEnd(const std::string& line) {
    return "no matching ']' found in \"" + line + "\"";
}
inline std::string SectionSeenTwice(const std::string& name) {
    return "Section [" + name + "] seen twice";
}
inline std::string EntryBeforeSections(const std::string& line) {
    return "Possible entry \"" + line + "\" found before first section";
}
inline std::string NoEquals(const std::string& line, const std::string& section) {
    return "No '=' found in \"" + line + "\" in section " + section;
}
inline std::string NoEntryName(const std::string& line, const std::string& section) {
    return "No entry name found before '=' in \"" + line + "\" in section " + section;
}
inline std::string EntrySeenTwice(const std::string& name, const std::string& section) {
    return "Entry \"" + name + "\" seen twice in section " + section;
}
inline std::string OutOfMemory(const std::string& line) {
    return "out of memory (" + line + ")";
}
inline constexpr char kWideTextError[] = "UTF16/32 Unicode format not supported.";

// What is wrong with an entry that is to be set, or deleted.
inline constexpr char kCommentAsEntry[] = "cannot add comment as an entry";
inline std::string NoSuchSection(const std::string& name) {
    return "section \"" + name + "\" not found";
}

}  // namespace wavo::support_texts
