// What the cycle says: in the status bar, in boxes (as the fixture notes them) and in the error
// log.
#pragma once

namespace wavo {

inline constexpr char kConnectedText[] = "Connected to the master process (Dorvane)";
inline constexpr char kEndedText[] = "The master process (Dorvane) has ended the link";
inline constexpr char kOverrunText[] = "The value fifo ran over: Machine Data > Connect to go on";

inline constexpr char kOpenBox[] = "box Can not open mvales fifo";
inline constexpr char kTooSmallBox[] = "box Prg.error, input buffer for axis values to small";
inline constexpr char kNoBufferBox[] = "box Prg.error, value input buffer is not available";
inline constexpr char kNoLinesBox[] = "box Prg. error, number of fifo lines=0";

inline constexpr char kOpenFailed[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Open() failed";
inline constexpr char kNotOpen[] = "Write(): interface is not open";
inline constexpr char kReadFailed[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_AxValueReader.Read() failed";
inline constexpr char kNoBuffer[] =
    "CWavoView::OnMessageFromMainNewMValues(): value input buffer is not available";
inline constexpr char kInitFailed[] =
    "CWavoView::OnMessageFromMainNewMValues(): m_GraphAxSelect.Init() failed";
inline constexpr char kNoLines[] =
    "CWavoView::OnMessageFromMainNewMValues(): Prg. error, number of fifo lines=0";

}  // namespace wavo
