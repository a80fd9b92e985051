#include "recorder/notice/notice_segment.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

namespace wavo::recorder {

namespace {

constexpr std::uint32_t kMagic = 0x63655257;  // "WRec"
constexpr std::uint32_t kVersion = 1;

struct Content {
    std::uint32_t magic;
    std::uint32_t version;
    std::uint32_t state;
    std::uint32_t file_size;
    std::uint32_t reason_size;
    std::uint32_t reserved;
    double seconds;
    std::uint64_t lines;
    std::uint64_t lost;
    std::uint64_t bytes;
    char file[4096];
    char reason[1024];
};
static_assert(std::is_trivially_copyable_v<Content> && sizeof(Content) == 56 + 4096 + 1024);

/// `sequence` is odd while the content is being written.
struct Segment {
    std::uint32_t sequence;
    std::uint32_t reserved;
    Content content;
};
static_assert(std::is_trivially_copyable_v<Segment> && sizeof(Segment) == 8 + sizeof(Content));
static_assert(std::atomic_ref<std::uint32_t>::is_always_lock_free);

/// Copies what there is room for, whole characters of UTF-8. Returns the bytes copied.
template <std::size_t room>
std::uint32_t CopyText(const std::string& text, char (&to)[room]) {
    std::size_t size = std::min(text.size(), room);
    if (size < text.size()) {
        while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
            --size;
        }
    }
    std::memcpy(to, text.data(), size);
    return static_cast<std::uint32_t>(size);
}

template <std::size_t room>
std::string TextOf(const char (&from)[room], std::uint32_t size) {
    return {from, std::min<std::size_t>(size, room)};
}

std::optional<Notice> NoticeOf(const Content& content) {
    const bool is_notice =
        content.magic == kMagic && content.version == kVersion &&
        content.state >= static_cast<std::uint32_t>(RecorderState::kWaitsForMaster) &&
        content.state <= static_cast<std::uint32_t>(RecorderState::kFailed) &&
        std::isfinite(content.seconds) && content.seconds >= 0.0;
    if (!is_notice) {
        return std::nullopt;
    }
    return Notice{static_cast<RecorderState>(content.state),
                  content.seconds,
                  content.lines,
                  content.lost,
                  content.bytes,
                  TextOf(content.file, content.file_size),
                  TextOf(content.reason, content.reason_size)};
}

}  // namespace

NoticePublisher::NoticePublisher(platform::WindowHandle window)
    : m_segment(platform::SharedSegment::Create(NoticeSegmentName(window), sizeof(Segment))) {}

void NoticePublisher::Write(const Notice& notice) {
    if (!m_segment) {
        return;
    }
    Content content{};
    content.magic = kMagic;
    content.version = kVersion;
    content.state = static_cast<std::uint32_t>(notice.state);
    content.seconds = notice.seconds;
    content.lines = notice.lines;
    content.lost = notice.lost;
    content.bytes = notice.bytes;
    content.file_size = CopyText(notice.file, content.file);
    content.reason_size = CopyText(notice.reason, content.reason);
    auto* const segment = static_cast<Segment*>(m_segment.data());
    const std::atomic_ref<std::uint32_t> sequence(segment->sequence);
    sequence.store(++m_sequence, std::memory_order_relaxed);
    std::atomic_thread_fence(std::memory_order_release);
    std::memcpy(&segment->content, &content, sizeof content);
    sequence.store(++m_sequence, std::memory_order_release);
}

NoticeReader::NoticeReader(platform::WindowHandle window)
    : m_handle(platform::OpenSharedMemory(NoticeSegmentName(window))) {
    if (m_handle == 0) {
        return;
    }
    m_data = platform::MapSharedMemory(m_handle);
    m_size = m_data == nullptr ? 0 : platform::SharedMemorySize(m_data, m_handle);
    if (m_size < sizeof(Segment)) {
        Release();
    }
}

NoticeReader::~NoticeReader() {
    Release();
}

NoticeReader::NoticeReader(NoticeReader&& other) noexcept
    : m_data(std::exchange(other.m_data, nullptr)),
      m_size(std::exchange(other.m_size, 0)),
      m_handle(std::exchange(other.m_handle, 0)) {}

NoticeReader& NoticeReader::operator=(NoticeReader&& other) noexcept {
    if (this != &other) {
        Release();
        m_data = std::exchange(other.m_data, nullptr);
        m_size = std::exchange(other.m_size, 0);
        m_handle = std::exchange(other.m_handle, 0);
    }
    return *this;
}

void NoticeReader::Release() noexcept {
    if (m_data != nullptr) {
        platform::UnmapSharedMemory(std::exchange(m_data, nullptr), m_size);
    }
    if (m_handle != 0) {
        platform::CloseSharedMemory(std::exchange(m_handle, 0));
    }
}

std::optional<Notice> NoticeReader::Read() const {
    constexpr int kTries = 1000;
    if (m_data == nullptr) {
        return std::nullopt;
    }
    auto* const segment = static_cast<Segment*>(m_data);
    const std::atomic_ref<std::uint32_t> sequence(segment->sequence);
    for (int i = 0; i < kTries; ++i) {
        const std::uint32_t before = sequence.load(std::memory_order_acquire);
        Content content;
        std::memcpy(&content, &segment->content, sizeof content);
        std::atomic_thread_fence(std::memory_order_acquire);
        if ((before & 1U) == 0 && sequence.load(std::memory_order_relaxed) == before) {
            return NoticeOf(content);
        }
    }
    return std::nullopt;
}

}  // namespace wavo::recorder
