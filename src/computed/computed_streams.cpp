#include "computed/computed_streams.h"

#include "computed/computed_history.h"

namespace wavo::computed {

ComputedStreams::ComputedStreams(ComputedProgram program, Origin origin)
    : m_program(std::move(program)), m_origin(std::move(origin)) {}

ComputedStreams::~ComputedStreams() = default;

History& ComputedStreams::StreamOf(std::size_t axis, std::int32_t order) {
    std::unique_ptr<ComputedHistory>& stream = m_streams[{axis, order}];
    if (stream == nullptr) {
        stream = std::make_unique<ComputedHistory>(*this, axis, order);
    }
    return *stream;
}

void ComputedStreams::ForgetValues() {
    m_places.clear();
    m_values.clear();
}

const std::vector<double>* ComputedStreams::Find(const BlockKey& key) {
    const auto found = m_places.find(key);
    if (found == m_places.end()) {
        return nullptr;
    }
    m_values.splice(m_values.begin(), m_values, found->second);
    return &found->second->values;
}

const std::vector<double>& ComputedStreams::Keep(const BlockKey& key, std::vector<double> values) {
    if (m_values.size() == kBlocksKept) {
        m_places.erase(m_values.back().key);
        m_values.pop_back();
    }
    m_values.push_front({key, std::move(values)});
    m_places[key] = m_values.begin();
    return m_values.front().values;
}

void ComputedStreams::Forget(const ComputedHistory& stream, std::int64_t first_block) {
    auto place = m_places.lower_bound({&stream, first_block});
    while (place != m_places.end() && place->first.first == &stream) {
        m_values.erase(place->second);
        place = m_places.erase(place);
    }
}

}  // namespace wavo::computed
