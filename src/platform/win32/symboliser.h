// Names of functions for addresses in this program, from the symbol table that the linker leaves in
// the executable.
#pragma once

#include <cstdint>
#include <string_view>

namespace wavo::platform {

/// The symbol table of the executable, mapped as a file. Allocates nothing; every offset that the
/// file tells is checked against its size.
class Symboliser {
 public:
    /// `program`: path of the executable. Where it cannot be read there are no names.
    explicit Symboliser(const wchar_t* program) noexcept;
    ~Symboliser();
    Symboliser(const Symboliser&) = delete;
    Symboliser& operator=(const Symboliser&) = delete;

    struct Symbol {
        std::string_view name;      ///< as linked; empty when there is none
        std::uint32_t address = 0;  ///< relative to the start of the program in memory
    };
    /// The function that the address, relative to the start of the program, lies in.
    [[nodiscard]] Symbol Find(std::uint32_t address) const noexcept;

 private:
    struct Section {
        std::uint32_t begin = 0;
        std::uint32_t end = 0;
        std::uint16_t number = 0;
    };
    void ReadHeaders() noexcept;
    [[nodiscard]] Section SectionOf(std::uint32_t address) const noexcept;
    [[nodiscard]] std::string_view NameAt(const unsigned char* symbol) const noexcept;

    const unsigned char* m_file = nullptr;
    std::uint64_t m_size = 0;
    std::uint64_t m_sections = 0;  ///< offset of the section headers in the file
    std::uint16_t m_section_count = 0;
    std::uint64_t m_symbols = 0;  ///< offset of the symbols in the file
    std::uint32_t m_symbol_count = 0;
};

}  // namespace wavo::platform
