// What a recorder tells of itself, and who reads it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "recorder/notice/notice_board.h"
#include "recorder/notice/notice_segment.h"

namespace wavo::recorder {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr platform::WindowHandle kWindow = 1234567;

Notice Example() {
    return {RecorderState::kRecords, 83.25, 332'000, 12, 181'200'000, "/data/night.mcap", ""};
}

/// The bytes of a segment of that window, as somebody else sees them.
class RawNotice {
 public:
    explicit RawNotice(platform::WindowHandle window)
        : m_handle(platform::OpenSharedMemory(NoticeSegmentName(window))),
          m_data(static_cast<char*>(platform::MapSharedMemory(m_handle))),
          m_size(platform::SharedMemorySize(m_data, m_handle)) {}
    ~RawNotice() {
        platform::UnmapSharedMemory(m_data, m_size);
        platform::CloseSharedMemory(m_handle);
    }
    RawNotice(const RawNotice&) = delete;
    RawNotice& operator=(const RawNotice&) = delete;

    template <typename T>
    void Put(std::size_t place, T value) {
        std::memcpy(m_data + place, &value, sizeof value);
    }

 private:
    platform::MappingHandle m_handle;
    char* m_data;
    std::uint64_t m_size;
};

TEST(NoticeSegment, WhatIsWrittenIsRead) {
    NoticePublisher publisher(kWindow);
    const NoticeReader reader(kWindow);
    ASSERT_TRUE(reader.IsOpen());
    EXPECT_EQ(reader.Read(), std::nullopt) << "nothing was written yet";
    publisher.Write(Example());
    EXPECT_EQ(reader.Read(), Example());
    Notice failed = Example();
    failed.state = RecorderState::kFailed;
    failed.reason = "no space left";
    publisher.Write(failed);
    EXPECT_EQ(reader.Read(), failed);
    EXPECT_TRUE(failed.HasEnded());
}

TEST(NoticeSegment, GoesWithTheRecorderButCanStillBeReadByWhoHasIt) {
    auto publisher = std::make_unique<NoticePublisher>(kWindow);
    publisher->Write(Example());
    NoticeReader reader(kWindow);
    publisher.reset();
    EXPECT_EQ(reader.Read(), Example());
    reader = NoticeReader(kWindow + 1);
    EXPECT_FALSE(reader.IsOpen());
    EXPECT_FALSE(NoticeReader(kWindow).IsOpen());
    EXPECT_EQ(NoticeReader(kWindow).Read(), std::nullopt);
}

TEST(NoticeSegment, TextsThatAreTooLongAreCutBetweenCharacters) {
    NoticePublisher publisher(kWindow);
    Notice notice = Example();
    notice.file = "x";
    for (int i = 0; i < 3000; ++i) {
        notice.file += "\xC3\xA4";
    }
    publisher.Write(notice);
    const auto read = NoticeReader(kWindow).Read();
    ASSERT_TRUE(read);
    EXPECT_EQ(read->file, notice.file.substr(0, 4095));
}

TEST(NoticeSegment, WhatIsNoNoticeIsNone) {
    NoticePublisher publisher(kWindow);
    publisher.Write(Example());
    const NoticeReader reader(kWindow);
    RawNotice raw(kWindow);
    raw.Put<std::uint32_t>(8, 1);  // another kind of segment
    EXPECT_EQ(reader.Read(), std::nullopt);
    publisher.Write(Example());
    raw.Put<std::uint32_t>(12, 2);  // of a later version
    EXPECT_EQ(reader.Read(), std::nullopt);
    publisher.Write(Example());
    for (const std::uint32_t state : {0U, 6U, ~0U}) {
        raw.Put<std::uint32_t>(16, state);
        EXPECT_EQ(reader.Read(), std::nullopt);
    }
    publisher.Write(Example());
    for (const double seconds : {-1.0, std::numeric_limits<double>::quiet_NaN(),
                                 std::numeric_limits<double>::infinity()}) {
        raw.Put<double>(32, seconds);
        EXPECT_EQ(reader.Read(), std::nullopt);
    }
    publisher.Write(Example());
    raw.Put<std::uint32_t>(20, ~0U);  // a length beyond all room
    ASSERT_TRUE(reader.Read());
    EXPECT_EQ(reader.Read()->file.size(), 4096U);
    raw.Put<std::uint32_t>(0, 7);  // being written, and never finished
    EXPECT_EQ(reader.Read(), std::nullopt);
}

TEST(NoticeSegment, OneThatIsTooSmallIsNotOpened) {
    const auto small = platform::SharedSegment::Create(NoticeSegmentName(kWindow), 64);
    ASSERT_TRUE(small);
    EXPECT_FALSE(NoticeReader(kWindow).IsOpen());
    EXPECT_EQ(NoticeReader(kWindow).Read(), std::nullopt);
}

class Board : public ::testing::Test {
 protected:
    std::vector<std::string> m_told;
    std::vector<platform::WindowHandle> m_gone;
    NoticeBoard m_board{
        kWindow, [this](platform::WindowHandle window, std::uint32_t number, NoticeBoard::Way way) {
            m_told.push_back((way == NoticeBoard::Way::kSent ? "send " : "post ") +
                             std::to_string(window) + ' ' + std::to_string(number));
            return std::ranges::count(m_gone, window) == 0;
        }};
};

TEST_F(Board, WhoWatchesIsToldOfWhatIsNew) {
    m_board.Show(Example());
    EXPECT_THAT(m_told, IsEmpty());
    m_board.Watch(7);
    m_board.Watch(7);
    m_board.Watch(8);
    EXPECT_THAT(m_told, ElementsAre("post 7 1331", "post 8 1331"));
    m_told.clear();
    m_board.Show(Example());
    EXPECT_THAT(m_told, IsEmpty()) << "nothing is new";
    Notice later = Example();
    later.lines += 1;
    m_gone = {7};
    m_board.Show(later);
    EXPECT_THAT(m_told, ElementsAre("post 7 1331", "post 8 1331"));
    EXPECT_EQ(NoticeReader(kWindow).Read(), later);
    m_told.clear();
    later.state = RecorderState::kEnded;
    m_board.Show(later);
    EXPECT_THAT(m_told, ElementsAre("send 8 1331"));
}

TEST_F(Board, SomeWatchersAreEnough) {
    m_gone = {5};
    m_board.Watch(5);
    for (platform::WindowHandle window = 10; window < 200; ++window) {
        m_board.Watch(window);
    }
    EXPECT_EQ(m_told.size(), 1 + NoticeBoard::kMostWatchers);
}

TEST(NoticeTexts, TimesAndSizesReadAsPeopleReadThem) {
    EXPECT_EQ(TimeText(0.0), "00:00:00");
    EXPECT_EQ(TimeText(83.99), "00:01:23");
    EXPECT_EQ(TimeText(360'000.0), "100:00:00");
    EXPECT_EQ(SizeText(0), "0.0 MB");
    EXPECT_EQ(SizeText(181'200'000), "181.2 MB");
    EXPECT_EQ(SizeText(8'800'000'000), "8.8 GB");
}

}  // namespace
}  // namespace wavo::recorder
