// Writing of whole files.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/folders.h"
#include "platform/last_error.h"
#include "support/byte_scan.h"
#include "support/diagnostics.h"
#include "support/fast_file.h"
#include "support/report_texts.h"

namespace wavo {

namespace {

using platform::Creation;
using platform::FileHandle;
using platform::Files;
using platform::LastError;

/// Largest write that the system takes at once.
constexpr std::size_t kLargestWrite = 4294967295U;
/// Temporary files are named "ffw", four digits and ".tmp"; a NUL follows.
constexpr char kTemporaryPrefix[] = "ffw";
constexpr std::size_t kTemporaryName = 12;

struct FreeMemory {
    void operator()(char* memory) const noexcept { std::free(memory); }
};
using Memory = std::unique_ptr<char, FreeMemory>;

Memory Allocate(std::size_t size) {
    // For no bytes at all some systems give null.
    return Memory(static_cast<char*>(std::malloc(std::max<std::size_t>(size, 1))));
}

unsigned LastErrorNumber() {
    return static_cast<unsigned>(LastError());
}

/// The path up to its last separator, with the system's separator; empty when it has none.
std::string FolderOf(const std::string& path) {
    const std::string separator = platform::PathSeparator();
    const std::size_t end = path.find_last_of(separator == "/" ? separator : "/" + separator);
    return end == std::string::npos ? std::string() : path.substr(0, end) + separator;
}

/// Makes the temporary file beside `target`; empty on failure.
std::string TemporaryFileFor(const std::string& target) {
    const Memory name = Allocate(target.size() + kTemporaryName);
    if (name == nullptr) {
        MERRTRACE(support_texts::kNoTemporaryName);
        return {};
    }
    if (!Files().CreateTemporaryFile(FolderOf(target), kTemporaryPrefix, target, name.get())) {
        MERRTRACE(support_texts::kNoTemporaryFile, LastErrorNumber());
        return {};
    }
    return name.get();
}

void RemoveTemporaryFile(const std::string& path) {
    const platform::LastErrorKeeper keep;
    Files().Remove(path);
}

/// Writes, flushes and closes. True when all of it went well.
bool WriteAndClose(FileHandle file, const void* data, std::size_t size, bool flush,
                   std::size_t& written) {
    bool is_complete = write64(file, data, size, written);
    if (!is_complete) {
        MERRTRACE(support_texts::kNotWritten, "MFastFile_WriteAtOnce");
    } else if (flush && !Files().Flush(file)) {
        MERRTRACE(support_texts::kFlushFailed, "MFastFile_WriteAtOnce", LastErrorNumber());
        is_complete = false;
    }
    if (!Files().Close(file)) {
        MERRTRACE(support_texts::kCloseFailed, "MFastFile_WriteAtOnce", LastErrorNumber());
        is_complete = false;
    }
    return is_complete;
}

/// Whether all line ends in the block are CR LF and none is cut by its begin or end.
/// A loop that compilers turn into a few wide instructions.
constexpr std::size_t kBlock = 256;
bool IsCrLfBlock(const char* text) {
    unsigned char differs = 0;
    for (std::size_t i = 1; i < kBlock; ++i) {
        differs |= static_cast<unsigned char>((text[i] == '\n') != (text[i - 1] == '\r'));
    }
    return differs == 0 && text[0] != '\n' && text[kBlock - 1] != '\r';
}

/// Copies `text`, all of whose line ends become CR LF; returns one past the last byte written.
char* CopyWithCrLf(std::string_view text, char* to) {
    const char* from = text.data();
    const char* const end = from + text.size();
    while (from != end) {
        if (static_cast<std::size_t>(end - from) >= kBlock && IsCrLfBlock(from)) {
            std::memcpy(to, from, kBlock);
            from += kBlock;
            to += kBlock;
            continue;
        }
        const char* const line_end = bytes::FindEither(from, end, '\r', '\n');
        const auto length = static_cast<std::size_t>(line_end - from);
        std::memcpy(to, from, length);
        from += length;
        to += length;
        if (from != end) {
            *to++ = '\r';
            *to++ = '\n';
            from += *from == '\r' && end - from > 1 && from[1] == '\n' ? 2 : 1;
        }
    }
    return to;
}

}  // namespace

FileHandle openwritefile(const std::string& path, int mode) {
    const bool write_through = (mode & kWriteFlush) != 0;
    const int base_mode = mode & ~kWriteFlush;
    Creation creation = Creation::kCreateNew;
    switch (base_mode) {
        case kWriteNew:
            break;
        case kWriteAppend:
            creation = Creation::kOpenAlways;
            break;
        case kWriteOverwrite:
            creation = Creation::kCreateAlways;
            break;
        default:
            MERRTRACE(support_texts::kUnknownWriteMode, base_mode, path.c_str());
            return platform::kInvalidFile;
    }
    const FileHandle file = Files().OpenForWriting(path, creation, write_through);
    if (file == platform::kInvalidFile) {
        MERRTRACE(support_texts::kCreateFailed, "openwritefile", path.c_str(), LastErrorNumber());
    }
    return file;
}

bool write64(FileHandle file, const void* data, std::size_t size, std::size_t& count) {
    count = 0;
    while (count < size) {
        std::size_t written = 0;
        platform::SetLastError(0);
        const bool is_written = Files().Write(file, static_cast<const char*>(data) + count,
                                              std::min(size - count, kLargestWrite), written);
        count += written;
        // Nothing taken and no error told: it would go on for ever.
        if (!is_written || written == 0) {
            MERRTRACE(support_texts::kWriteFailed, "write64", LastErrorNumber());
            return false;
        }
    }
    return true;
}

bool file_rename(const std::string& from, const std::string& to) {
    if (!Files().Rename(from, to)) {
        MERRTRACE(support_texts::kRenameFailed, from.c_str(), to.c_str(), LastErrorNumber());
        return false;
    }
    return true;
}

std::size_t MFastFile_WriteAtOnce(const std::string& path, const void* data, std::size_t size,
                                  int mode) {
    bool flush = (mode & kWriteFlush) != 0;
    int base_mode = mode & ~kWriteFlush;
    const bool replace = base_mode == kWriteReplace;
    std::string target = path;
    std::string file_path = path;
    if (replace) {
        base_mode = kWriteOverwrite;
        flush = true;
        target = Files().FollowLinks(path);
        if (target.empty() && !path.empty()) {
            MERRTRACE(support_texts::kNoTemporaryFile, LastErrorNumber());
            return kWriteFailed;
        }
        file_path = TemporaryFileFor(target);
        if (file_path.empty()) {
            return kWriteFailed;
        }
    }
    const FileHandle file = openwritefile(file_path, flush ? base_mode | kWriteFlush : base_mode);
    if (file == platform::kInvalidFile) {
        MERRTRACE(support_texts::kNotOpenedForWriting, "MFastFile_WriteAtOnce", file_path.c_str(),
                  base_mode);
        if (replace) {
            RemoveTemporaryFile(file_path);
        }
        return kWriteFailed;
    }
    std::size_t written = 0;
    bool is_complete = WriteAndClose(file, data, size, flush, written);
    // The new file takes the target's place whatever became of it: the caller has been told.
    if (replace && !file_rename(file_path, target)) {
        MERRTRACE(support_texts::kNotRenamed, file_path.c_str(), target.c_str(),
                  platform::ErrorText(LastError()).c_str());
        RemoveTemporaryFile(file_path);
        is_complete = false;
    }
    return is_complete ? written : kWriteFailed;
}

std::size_t MFastFile_WriteLinesAtOnce(const std::string& path, std::string_view text,
                                       unsigned flags) {
    int mode = kWriteOverwrite;
    if ((flags & kSaveFlush) != 0) {
        mode |= kWriteFlush;
    }
    if ((flags & kSaveSafe) != 0) {
        mode += kWriteReplace - kWriteOverwrite;
    }
    // At worst every byte is a line end.
    const std::size_t largest = 2 * text.size();
    const Memory lines = Allocate(largest);
    if (lines == nullptr) {
        MERRTRACE(support_texts::kNoMemoryForLines, largest,
                  platform::ErrorText(LastError()).c_str());
        return kWriteFailed;
    }
    const auto size = static_cast<std::size_t>(CopyWithCrLf(text, lines.get()) - lines.get());
    const std::size_t written = MFastFile_WriteAtOnce(path, lines.get(), size, mode);
    if (written == kWriteFailed) {
        MERRTRACE(support_texts::kLinesNotWritten, path.c_str(), size, mode);
    }
    return written;
}

}  // namespace wavo
