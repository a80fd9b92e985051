// Bytes of a file in memory: integers are little-endian and packed, texts have their length in
// front.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

namespace wavo::recording {

static_assert(std::endian::native == std::endian::little, "files are little-endian, by copy");

using Bytes = std::span<const std::byte>;

inline Bytes BytesOf(std::string_view text) {
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// Bytes that grow at their end.
class ByteWriter {
 public:
    [[nodiscard]] std::size_t size() const { return m_size; }
    [[nodiscard]] const std::byte* data() const { return m_memory.data(); }
    [[nodiscard]] Bytes View() const { return {m_memory.data(), m_size}; }
    [[nodiscard]] Bytes View(std::size_t from) const { return View().subspan(from); }
    void Clear() { m_size = 0; }

    template <typename Number>
    void Put(Number number) {
        static_assert(std::is_arithmetic_v<Number>);
        std::memcpy(Extend(sizeof number), &number, sizeof number);
    }
    void PutBytes(const void* from, std::size_t size) {
        if (size > 0) {
            std::memcpy(Extend(size), from, size);
        }
    }
    void PutBytes(Bytes bytes) { PutBytes(bytes.data(), bytes.size()); }
    /// A length of 32 bits, then the bytes.
    void PutText(std::string_view text) {
        Put(static_cast<std::uint32_t>(text.size()));
        PutBytes(text.data(), text.size());
    }

    /// Makes room for `size` bytes at the end and returns it, to be written at once.
    std::byte* Extend(std::size_t size) {
        const std::size_t begin = m_size;
        m_size += size;
        if (m_size > m_memory.size()) {
            m_memory.resize(m_size + m_size / 2);
        }
        return m_memory.data() + begin;
    }

    /// Overwrites a number. REQUIRES: it lies within.
    template <typename Number>
    void PutAt(std::size_t offset, Number number) {
        std::memcpy(m_memory.data() + offset, &number, sizeof number);
    }
    void PutBytesAt(std::size_t offset, Bytes bytes) {
        std::memcpy(m_memory.data() + offset, bytes.data(), bytes.size());
    }

 private:
    std::vector<std::byte> m_memory;  // with room behind what is written
    std::size_t m_size = 0;
};

/// Takes bytes from the front. What goes beyond the end gives zeros and empty texts, and Failed().
class ByteReader {
 public:
    explicit ByteReader(Bytes bytes) : m_left(bytes) {}

    [[nodiscard]] bool Failed() const { return m_failed; }
    [[nodiscard]] Bytes Left() const { return m_left; }
    [[nodiscard]] bool AtEnd() const { return m_left.empty(); }

    template <typename Number>
    Number Take() {
        Number number{};
        const Bytes bytes = TakeBytes(sizeof number);
        if (bytes.size() == sizeof number) {
            std::memcpy(&number, bytes.data(), sizeof number);
        }
        return number;
    }
    Bytes TakeBytes(std::uint64_t size) {
        if (m_failed || size > m_left.size()) {
            m_failed = true;
            m_left = {};
            return {};
        }
        const Bytes taken = m_left.first(static_cast<std::size_t>(size));
        m_left = m_left.subspan(taken.size());
        return taken;
    }
    std::string_view TakeText() {
        const Bytes bytes = TakeBytes(Take<std::uint32_t>());
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }

 private:
    Bytes m_left;
    bool m_failed = false;
};

}  // namespace wavo::recording
