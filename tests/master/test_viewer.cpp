#include "test_viewer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>

namespace wavo::testing {

MappedSegment::MappedSegment(const std::string& name) {
    const platform::MappingHandle handle = platform::OpenSharedMemory(name);
    if (handle == 0) {
        return;
    }
    m_address = platform::MapSharedMemory(handle);
    m_size = platform::SharedMemorySize(m_address, handle);
    platform::CloseSharedMemory(handle);
}

MappedSegment::~MappedSegment() {
    if (m_address != nullptr) {
        platform::UnmapSharedMemory(m_address, m_size);
    }
}

void MappedSegment::Copy(std::size_t offset, void* to, std::size_t size) const {
    ASSERT_LE(offset + size, m_size);
    std::atomic_thread_fence(std::memory_order_acquire);
    std::memcpy(to, static_cast<const char*>(m_address) + offset, size);
    std::atomic_thread_fence(std::memory_order_acquire);
}

void MappedSegment::Store(std::size_t offset, const void* from, std::size_t size) {
    ASSERT_LE(offset + size, m_size);
    std::atomic_thread_fence(std::memory_order_seq_cst);
    std::memcpy(static_cast<char*>(m_address) + offset, from, size);
    std::atomic_thread_fence(std::memory_order_seq_cst);
}

bool SegmentExists(const std::string& name) {
    return static_cast<bool>(MappedSegment(name));
}

std::optional<Info> ReadInfo() {
    const MappedSegment segment(kInfoSegmentName);
    if (!segment || segment.size() < sizeof(MasterInfoBlock)) {
        return std::nullopt;
    }
    const auto block = segment.Get<MasterInfoBlock>(0);
    Info info{block.master_window, block.cycle_time, block.fifo_lines, {}};
    std::string names(block.axis_names, sizeof block.axis_names);
    for (std::uint64_t i = 0; i < block.axis_count; ++i) {
        const auto end = names.find('\0');
        if (end == std::string::npos) {
            return std::nullopt;
        }
        info.axis_names.push_back(names.substr(0, end));
        names.erase(0, end + 1);
    }
    return info;
}

TestViewer::TestViewer() {
    std::string error;
    m_window = platform::MessageWindow::Create(
        [this](const platform::Message& message) { return Handle(message); }, &error);
    EXPECT_TRUE(m_window) << error;
    m_window->SetPeerGoneHandler(
        [this](platform::WindowHandle window) { master_gone |= window == info.master_window; });
}

TestViewer::~TestViewer() {
    Detach();
}

std::string TestViewer::FifoName() const {
    return kValueSegmentPrefix + std::to_string(handle());
}

std::string TestViewer::ModuleName() const {
    return kCapabilitySegmentPrefix + std::to_string(handle());
}

bool TestViewer::Connect() {
    const auto read = ReadInfo();
    if (!read || read->master_window == 0) {
        return false;
    }
    info = *read;
    PostConnect();
    return true;
}

void TestViewer::PostConnect() {
    m_window->Post(info.master_window, {static_cast<std::uint32_t>(ToMaster::kLink),
                                        static_cast<std::uint64_t>(LinkRequest::kConnect),
                                        static_cast<std::int64_t>(handle())});
}

void TestViewer::SendDisconnect() {
    m_window->Send(info.master_window, {static_cast<std::uint32_t>(ToMaster::kLink),
                                        static_cast<std::uint64_t>(LinkRequest::kDisconnect),
                                        static_cast<std::int64_t>(handle())});
}

void TestViewer::Send(ToMaster number) {
    m_window->Send(info.master_window,
                   {static_cast<std::uint32_t>(number), 0, static_cast<std::int64_t>(handle())});
}

void TestViewer::SendReady() {
    Send(ToMaster::kReady);
}

void TestViewer::Disconnect() {
    SendDisconnect();
    Detach();
}

void TestViewer::Detach() {
    if (m_fifo) {
        m_fifo->Set<std::uint64_t>(offsetof(LineFifoHeader, reader_mark), 0);
        m_fifo.reset();
    }
}

void TestViewer::Serve(std::chrono::milliseconds timeout) {
    if (timeout.count() > 0) {
        m_window->WaitAndDispatch(timeout);
    } else {
        m_window->Dispatch();
    }
}

bool TestViewer::ServeUntil(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!done()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        Serve(std::chrono::milliseconds(10));
    }
    return true;
}

std::int64_t TestViewer::Handle(const platform::Message& message) {
    messages.push_back(message);
    if (message.number == kMasterIsHere) {
        ++announcements;
        return 1;
    }
    switch (static_cast<FromMaster>(message.number)) {
        case FromMaster::kValues:
            if (message.w_param == static_cast<std::uint64_t>(ValuesNotice::kNewValues)) {
                TakeBatch();
            } else if (message.w_param == static_cast<std::uint64_t>(ValuesNotice::kLinkEnded)) {
                ++link_ends;
                Detach();
            }
            return 1;
        case FromMaster::kOverrun:
            ++overruns;
            if (disconnects_on_overrun) {
                Disconnect();
            }
            return 1;
        case FromMaster::kQuit:
            ++quits;
            Disconnect();
            return 1;
        case FromMaster::kCapabilitiesChanged:
            ++capability_changes;
            return 1;
    }
    ADD_FAILURE() << "message of unknown number " << message.number;
    return 0;
}

bool TestViewer::Attach() {
    auto fifo = std::make_unique<MappedSegment>(FifoName());
    if (!*fifo || fifo->Get<std::uint64_t>(offsetof(LineFifoHeader, reader_mark)) != 0) {
        return false;
    }
    fifo->Set<std::uint64_t>(offsetof(LineFifoHeader, reader_mark), 1);
    m_fifo = std::move(fifo);
    return true;
}

void TestViewer::TakeBatch() {
    ++batches;
    if (!takes_batches) {
        return;
    }
    if (!m_fifo && !Attach()) {
        ++failed_opens;
        return;
    }
    ReadLines();
    if (answers) {
        SendReady();
    }
}

void TestViewer::ReadLines() {
    const auto line_size = m_fifo->Get<std::uint64_t>(offsetof(LineFifoHeader, line_size));
    const auto line_count = m_fifo->Get<std::uint64_t>(offsetof(LineFifoHeader, line_count));
    const auto write_index = m_fifo->Get<std::uint64_t>(offsetof(LineFifoHeader, write_index));
    auto read_index = m_fifo->Get<std::uint64_t>(offsetof(LineFifoHeader, read_index));
    if (line_size < info.axis_names.size() * sizeof(double) || write_index >= line_count ||
        line_count > m_fifo->size() / line_size) {
        ++failed_opens;  // nonsense: leave it
        return;
    }
    while (read_index != write_index) {
        std::vector<double> line;
        for (std::size_t axis = 0; axis < info.axis_names.size(); ++axis) {
            line.push_back(m_fifo->Get<double>(sizeof(LineFifoHeader) + read_index * line_size +
                                               axis * sizeof(double)));
        }
        lines.push_back(std::move(line));
        read_index = (read_index + 1) % line_count;
        m_fifo->Set(offsetof(LineFifoHeader, read_index), read_index);
    }
}

std::optional<std::map<std::string, AxisCapabilities>> TestViewer::ReadCapabilities() {
    Send(ToMaster::kCapabilityBegin);
    std::optional<std::map<std::string, AxisCapabilities>> records;
    if (const MappedSegment module(ModuleName()); module) {
        records.emplace();
        const auto count = module.Get<std::int32_t>(0);
        for (std::int32_t k = 0; k < count; ++k) {
            const std::size_t at = CapabilityRecordOffset(static_cast<std::size_t>(k));
            if (at + sizeof(CapabilityRecord) > module.size()) {
                ADD_FAILURE() << "record " << k << " lies outside of the module";
                break;
            }
            const auto record = module.Get<CapabilityRecord>(at);
            (*records)[record.axis_name] = {record.upper_limit, record.lower_limit,
                                            record.velocity_limit, record.acceleration_limit,
                                            record.resolution};
        }
    }
    Send(ToMaster::kCapabilityEnd);
    return records;
}

}  // namespace wavo::testing
