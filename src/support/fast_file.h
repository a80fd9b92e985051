// Buffered reading of text files by lines, and writing of whole files, through a temporary file
// where the old contents must not be lost half way.
//
// Invariants:
// 1. Faults are reported through the error trace where they happen and returned as a failure;
//    nothing throws.
// 2. Reading goes through one fixed buffer; no allocation per line beyond the caller's string.
// 3. A line ends in LF, CR or CR LF, also where the two bytes of CR LF come with two reads. What
//    follows the last line end is a line when it is not empty.
//
// A file that is replaced keeps its permissions. A target that is a symbolic link stays one: the
// file that it leads to is replaced, with the temporary file beside that file.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

#include "platform/file.h"
#include "support/text_buffer.h"

namespace wavo {

/// Write modes; a mode may be joined with kWriteFlush.
inline constexpr int kWriteNew = 0;        ///< a new file; fails when there is one
inline constexpr int kWriteAppend = 1;     ///< at the end of the file, made when missing
inline constexpr int kWriteOverwrite = 2;  ///< a new file, or over the one that is there
/// Into a temporary file that takes the target's place. Only for MFastFile_WriteAtOnce.
inline constexpr int kWriteReplace = 10;
/// Write through to the device, and flush after writing.
inline constexpr int kWriteFlush = 4;

/// Flags of MFastFile_WriteLinesAtOnce.
inline constexpr unsigned kSaveFlush = 8;  ///< write-through and flush
inline constexpr unsigned kSaveSafe = 16;  ///< through a temporary file

/// What the functions that return a number of bytes return on failure.
inline constexpr std::size_t kWriteFailed = static_cast<std::size_t>(-1);

/// Opens an existing file for reading. The caller closes `file`, which is platform::kInvalidFile
/// on failure. The second argument is not used.
bool openfile(const std::string& path, int unused, platform::FileHandle& file);

/// Opens a file for writing as kWriteNew, kWriteAppend or kWriteOverwrite say, with kWriteFlush or
/// without. Returns platform::kInvalidFile on failure; the caller closes the handle.
platform::FileHandle openwritefile(const std::string& path, int mode);

/// Reads up to `size` bytes; `count` is how many came, 0 at the end of the file or on failure.
bool read64(platform::FileHandle file, void* data, std::size_t size, std::size_t& count);

/// Writes `size` bytes; `count` is how many were written, on failure too.
bool write64(platform::FileHandle file, const void* data, std::size_t size, std::size_t& count);

/// Gives a file another name, in the place of a file that has it.
bool file_rename(const std::string& from, const std::string& to);

/// Writes `size` bytes as the file `path`. Returns the number of bytes written, kWriteFailed on any
/// failure. With kWriteReplace the temporary file takes the target's place also after a failed
/// write or flush; when it cannot, it is removed and the target stays what it was.
std::size_t MFastFile_WriteAtOnce(const std::string& path, const void* data, std::size_t size,
                                  int mode);

/// Writes a text whose lines end in LF, CR or CR LF as a file whose lines all end in CR LF.
/// `flags`: kSaveFlush, kSaveSafe. Returns the number of bytes written, kWriteFailed on failure.
std::size_t MFastFile_WriteLinesAtOnce(const std::string& path, std::string_view text,
                                       unsigned flags);

/// What a buffered file is to those who take bytes out of its buffer.
class MFastFile {
 public:
    /// Refills the read buffer; true also at the end of the file, where nothing comes.
    virtual bool fill_buffer() = 0;
    virtual ~MFastFile();

    MFastFile(const MFastFile&) = delete;
    MFastFile& operator=(const MFastFile&) = delete;

 protected:
    MFastFile() = default;
};

/// Reads a file by lines. Closes it when it goes.
class MFastFileReader : public MFastFile {
 public:
    static constexpr std::size_t kBufferSize = 8192;

    MFastFileReader() = default;
    ~MFastFileReader() override;

    /// Opens an existing file; one that was open is closed before.
    bool Open(const std::string& path);

    /// Closes the file; true also when none is open. After a failure no file is open either.
    bool Close();

    /// Takes the next line without its end; empty at the end of the file, which IsEOF tells.
    bool ReadLine(std::string& line);

    enum class Line {
        kWhole,        ///< the line was appended
        kCut,          ///< so were the first `limit` bytes; the next call goes on behind them
        kFailed,       ///< as ReadLine fails
        kOutOfMemory,  ///< the text could not grow
    };
    /// ReadLine for lines that may be of any length: appends at most `limit` bytes to `text`.
    Line AppendLine(TextBuffer& text, std::size_t limit);

    /// Whether nothing is left to read. A read that fails counts as the end, with an error-log
    /// entry; so does asking with no open file.
    bool IsEOF() { return m_current < m_end ? false : IsEOFAtBufferEnd(); }

    /// REQUIRES: a file is open.
    bool fill_buffer() override;

    /// Whether a read has failed since the file was opened: the end that IsEOF tells may then not
    /// be the end of the file.
    [[nodiscard]] bool HasFailed() const { return m_has_failed; }

    /// Size in bytes of the open file, for reserving memory; 0 when it cannot be told.
    [[nodiscard]] std::uint64_t FileSize() const;
    /// The path of the open file; empty when none is open.
    [[nodiscard]] const std::string& FileName() const { return m_file_name; }

 private:
    bool IsEOFAtBufferEnd();
    /// Skips the LF of a CR LF. The CR has been taken.
    bool SkipLineFeed();

    std::array<char, kBufferSize> m_buffer;
    const char* m_end = m_buffer.data();      ///< one past the last valid byte
    const char* m_current = m_buffer.data();  ///< next byte to hand out
    platform::FileHandle hFile = platform::kInvalidFile;
    int m_state = -1;  ///< 0: a file is open; -1: none is
    std::string m_file_name;
    bool m_has_failed = false;
};

}  // namespace wavo
