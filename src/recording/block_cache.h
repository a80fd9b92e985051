// What was read of a file last, within a limit of memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <unordered_map>
#include <utility>

namespace wavo::recording {

/// Values by a key of two numbers; those not used for longest go first.
template <typename Value>
class BlockCache {
 public:
    explicit BlockCache(std::size_t most_bytes) : m_most_bytes(most_bytes) {}

    /// The value; null when it is not there. Valid until the next Put.
    const Value* Find(std::uint64_t first, std::uint64_t second) {
        const auto found = m_places.find(Key{first, second});
        if (found == m_places.end()) {
            return nullptr;
        }
        m_items.splice(m_items.begin(), m_items, found->second);
        return &found->second->value;
    }

    /// Keeps a value that takes some `bytes`; it stays until the next Put whatever the limit says.
    const Value& Put(std::uint64_t first, std::uint64_t second, Value value, std::size_t bytes) {
        const Key key{first, second};
        if (const auto found = m_places.find(key); found != m_places.end()) {
            m_bytes -= found->second->bytes;
            m_items.erase(found->second);
            m_places.erase(found);
        }
        while (!m_items.empty() && m_bytes + bytes > m_most_bytes) {
            m_bytes -= m_items.back().bytes;
            m_places.erase(m_items.back().key);
            m_items.pop_back();
        }
        m_items.push_front({key, bytes, std::move(value)});
        m_places[key] = m_items.begin();
        m_bytes += bytes;
        return m_items.front().value;
    }

    void Clear() {
        m_places.clear();
        m_items.clear();
        m_bytes = 0;
    }

 private:
    using Key = std::pair<std::uint64_t, std::uint64_t>;
    struct Hash {
        std::size_t operator()(const Key& key) const {
            return static_cast<std::size_t>((key.first * 0x9E3779B97F4A7C15U) ^
                                            (key.second * 0xC2B2AE3D27D4EB4FU));
        }
    };
    struct Item {
        Key key;
        std::size_t bytes = 0;
        Value value;
    };

    const std::size_t m_most_bytes;
    std::size_t m_bytes = 0;
    std::list<Item> m_items;  // used last in front
    std::unordered_map<Key, typename std::list<Item>::iterator, Hash> m_places;
};

}  // namespace wavo::recording
