#include "support/mini_data_parts.h"

#include <algorithm>
#include <cstdlib>

namespace wavo {

void MIniDataArena::Free() noexcept {
    while (m_blocks != nullptr) {
        std::free(std::exchange(m_blocks, m_blocks->previous));
    }
    m_next = nullptr;
    m_left = 0;
    m_block_size = 0;
}

void* MIniDataArena::AllocateInNewBlock(std::size_t size) noexcept {
    constexpr std::size_t kSmallest = std::size_t{4} << 10;
    constexpr std::size_t kLargest = std::size_t{1} << 20;
    // Growing, so that a small store is small and a large one is not thousands of blocks.
    const std::size_t block_size =
        std::max(std::clamp(m_block_size * 2, kSmallest, kLargest), sizeof(Block) + size);
    void* const memory = std::malloc(block_size);
    if (memory == nullptr) {
        return nullptr;
    }
    m_blocks = new (memory) Block{m_blocks};
    m_block_size = block_size;
    char* const first = static_cast<char*>(memory) + sizeof(Block);
    m_next = first + size;
    m_left = block_size - sizeof(Block) - size;
    return first;
}

}  // namespace wavo
