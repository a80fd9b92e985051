#include "fake_shared_memory.h"

#include <cerrno>
#include <map>
#include <memory>
#include <new>
#include <utility>

#include "platform/last_error.h"
#include "platform/shared_memory.h"

namespace wavo {

namespace {

constexpr std::align_val_t kPage{4096};

struct Segment {
    Segment(std::size_t bytes, std::size_t shift) : size(bytes), misalignment(shift) {
        block.reset(static_cast<std::byte*>(::operator new(bytes + shift, kPage)));
        std::fill_n(block.get(), bytes + shift, std::byte{0});
    }
    struct Free {
        void operator()(std::byte* memory) const { ::operator delete(memory, kPage); }
    };
    [[nodiscard]] std::byte* memory() const { return block.get() + misalignment; }
    std::unique_ptr<std::byte, Free> block;
    std::size_t size;
    std::size_t misalignment;
    platform::SegmentState state = platform::SegmentState::kWhole;
    int questions = 0;  // about the state, until it is told
};

struct State {
    std::map<std::string, std::shared_ptr<Segment>> names;
    std::map<platform::MappingHandle, std::shared_ptr<Segment>> handles;
    std::vector<std::shared_ptr<Segment>> masters_mappings;  // last as long as a test looks at them
    std::map<testing::FakeFailure, int> failures;
    std::vector<std::string> calls;
    platform::MappingHandle next_handle = 0x100;
};

State& Fake() {
    static State state;
    return state;
}

bool ShouldFail(testing::FakeFailure call) {
    const auto found = Fake().failures.find(call);
    if (found == Fake().failures.end()) {
        return false;
    }
    platform::SetLastError(found->second);
    Fake().failures.erase(found);
    return true;
}

}  // namespace

namespace testing {

void ResetFakeSharedMemory() {
    Fake() = State();
}

std::byte* AddFakeSegment(const std::string& name, std::size_t size, std::size_t misalignment) {
    auto segment = std::make_shared<Segment>(size, misalignment);
    Fake().names[name] = segment;
    Fake().masters_mappings.push_back(segment);
    return segment->memory();
}

void RemoveFakeSegment(const std::string& name) {
    Fake().names.erase(name);
}

void SetFakeState(const std::string& name, platform::SegmentState state, int questions) {
    Fake().names.at(name)->state = state;
    Fake().names.at(name)->questions = questions;
}

void FailNext(FakeFailure call, int error) {
    Fake().failures[call] = error;
}

const std::vector<std::string>& FakeCalls() {
    return Fake().calls;
}

}  // namespace testing

namespace platform {

MappingHandle OpenSharedMemory(const std::string& name) noexcept {
    Fake().calls.push_back("open " + name);
    const auto found = Fake().names.find(name);
    if (found == Fake().names.end()) {
        SetLastError(ENOENT);
        return 0;
    }
    const MappingHandle handle = Fake().next_handle++;
    Fake().handles[handle] = found->second;
    return handle;
}

void* MapSharedMemory(MappingHandle handle) noexcept {
    Fake().calls.emplace_back("map");
    return ShouldFail(testing::FakeFailure::kMap) ? nullptr : Fake().handles.at(handle)->memory();
}

std::uint64_t SharedMemorySize(const void*, MappingHandle handle) noexcept {
    return Fake().handles.at(handle)->size;
}

SegmentState SharedMemoryState(const void*, MappingHandle handle) noexcept {
    Segment& segment = *Fake().handles.at(handle);
    return segment.questions-- > 0 ? SegmentState::kWhole : segment.state;
}

bool UnmapSharedMemory(void*, std::uint64_t) noexcept {
    Fake().calls.emplace_back("unmap");
    return !ShouldFail(testing::FakeFailure::kUnmap);
}

bool CloseSharedMemory(MappingHandle handle) noexcept {
    Fake().calls.emplace_back("close");
    Fake().handles.erase(handle);
    return !ShouldFail(testing::FakeFailure::kClose);
}

// The publisher's side is not used by these tests; it stands here so that nothing of the
// platform's own is linked.
SharedSegment::~SharedSegment() {
    Release();
}
SharedSegment::SharedSegment(SharedSegment&& other) noexcept = default;
SharedSegment& SharedSegment::operator=(SharedSegment&& other) noexcept = default;
SharedSegment SharedSegment::Create(const std::string&, std::size_t) noexcept {
    return {};
}
void SharedSegment::Release() noexcept {}
std::size_t RemoveLeftoverSegments(const std::string&) {
    return 0;
}

}  // namespace platform

}  // namespace wavo
