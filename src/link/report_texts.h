// What the link reports to the error log and to the user, where others rely on the words: service
// tools search logs for them. They stay byte for byte; names in them may be those of a former time.
#pragma once

namespace wavo::link_texts {

// The error log.
inline constexpr char kFifoNotOpened[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Open() failed";
inline constexpr char kFifoNotRead[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() failed";
inline constexpr char kNoInputBuffer[] =
    "CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available";
inline constexpr char kFifoWithoutLines[] =
    "CWavoView::OnMessageFromMainNewMValues(): Prg. error, number of fifo lines=0";

// Message boxes.
inline constexpr char kFifoNotOpenedBox[] = "Can not open mvales fifo";
inline constexpr char kFifoWithoutLinesBox[] = "Prg. error, number of fifo lines=0";
inline constexpr char kNoInputBufferBox[] = "Prg.error, value input buffer is not available";
inline constexpr char kInputBufferTooSmallBox[] =
    "Prg.error, input buffer for axis values to small";
inline constexpr char kNotPresentBox[] = "Master process (Dorvane) not present.";
inline constexpr char kOverrunBox[] =
    "overrun value fifo (main -> wavo.) from master proc. detected";

// The status bar.
inline constexpr char kConnected[] = "Connected to the master process (Dorvane)";
inline constexpr char kNotPresent[] = "Master process (Dorvane) not present";
inline constexpr char kRefused[] = "The master's info block is not valid, see the error log";
inline constexpr char kGone[] =
    "The master process (Dorvane) has gone: Machine Data > Connect when it is back";
inline constexpr char kLinkEnded[] = "The master process (Dorvane) has ended the link";
inline constexpr char kHung[] = "The master process (Dorvane) does not respond";
inline constexpr char kOverrun[] = "The value fifo ran over: Machine Data > Connect to go on";
inline constexpr char kNoMessage[] =
    "The master process (Dorvane) wrote what is no message, see the error log: "
    "Machine Data > Connect to go on";
inline constexpr char kDamaged[] =
    "The value fifo is damaged, see the error log: Machine Data > Connect to go on";
inline constexpr char kNoMessageWindow[] =
    "No messages from a master can arrive, see the error log";

}  // namespace wavo::link_texts
