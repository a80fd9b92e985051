// What the link reports to the error log and to the user, where others rely on the words: service
// tools search logs for them. They stay byte for byte; names in them may be those of a former time.
#pragma once

#include <cinttypes>

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
inline constexpr char kMasterRefused[] =
    "AcquisitionCycle::OnPeerRefused(): the master's connection was closed, it wrote %s";
inline constexpr char kReadWhileClosed[] = "Write(): interface is not open";
inline constexpr char kFifoEmpty[] = "AxValueReader::ReadFromFifo(): value fifo is empty";
inline constexpr char kSegmentNotUnlinked[] = "Close(): MSharedMem_Unlink() failed";
inline constexpr char kNoCapabilityModule[] =
    "SlaveGlobalCapabilities::GetNewCapabilitiesFromMaster(): failed to link data module [%s]";

// The error trace.
inline constexpr char kOpenWithoutName[] = "Open(): Null pointer for name";
inline constexpr char kSegmentNotLinked[] = "Open(): MSharedMem_Link(%.40s) failed";
inline constexpr char kFifoNotLinked[] = "Open(): MMemLineFifo_Link() failed";
inline constexpr char kFifoHasReader[] =
    "MMemLineFifo_Link(): Fifo not initialized or already has an exlusive reader";
inline constexpr char kDataNotAligned[] =
    "MMemLineFifo_Link(): Start address of data (%p) is not aligned to %zu";
inline constexpr char kIndexNotAligned[] =
    "MMemLineFifo_Link(): Address of write offset (%p) is not aligned to %zu";
inline constexpr char kLinkFailed[] = "MSharedMem_Link() failed for '%s' (%d)";
inline constexpr char kMapFailed[] = "MSharedMem_Link(): MapViewOfFile() failed (%d)";
inline constexpr char kLinkNotForgotten[] = "MSharedMem_Destroy(): DeleteLinkInfo() failed";
inline constexpr char kUnmapFailed[] = "MSharedMem_Unlink(): UnmapViewOfFile() failed (%d)";
inline constexpr char kCloseFailed[] = "MSharedMem_Destroy(): CloseHandle() failed (%d)";
inline constexpr char kLinkWithoutName[] = "MSharedMem_Link(): name == \"\"";
inline constexpr char kUnlinkNull[] = "MSharedMem_Unlink(): NULL pointer for memory";
inline constexpr char kUnlinkUnknown[] = "MSharedMem_Unlink(): no shared memory registered at %p";
inline constexpr char kLinkConflict[] = "SetNewLinkInfo():'%s'(%" PRId64 ",0x%" PRIx64
                                        ") in conflict to '%s'(%" PRId64 ",0x%" PRIx64 ")";
inline constexpr char kLinkCountBelowZero[] = "MSharedMem_Unlink(): link_count < 0";

// The trace.
inline constexpr char kLinesRead[] = "AxValueReader::ReadFromFifo(): read %u lines from main prg.";

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
