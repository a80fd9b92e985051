#include "platform/win32/symboliser.h"

#include <windows.h>

#include <cstddef>
#include <cstring>

#include "platform/win32/handle.h"

namespace wavo::platform {

namespace {

constexpr std::uint16_t kFunctionType = 0x20;
constexpr std::size_t kSymbolSize = IMAGE_SIZEOF_SYMBOL;
constexpr std::size_t kShortName = 8;
// Within a symbol:
constexpr std::size_t kValue = 8;
constexpr std::size_t kSectionNumber = 12;
constexpr std::size_t kType = 14;
constexpr std::size_t kAuxiliaries = 17;

template <typename T>
T At(const unsigned char* place) noexcept {
    T value{};
    std::memcpy(&value, place, sizeof value);
    return value;
}

}  // namespace

Symboliser::Symboliser(const wchar_t* program) noexcept {
    const Handle file(::CreateFileW(program, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size{};
    if (!file || ::GetFileSizeEx(file.get(), &size) == 0) {
        return;
    }
    const Handle mapping(::CreateFileMappingW(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
    if (!mapping) {
        return;
    }
    m_file =
        static_cast<const unsigned char*>(::MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
    if (m_file != nullptr) {
        m_size = static_cast<std::uint64_t>(size.QuadPart);
        ReadHeaders();
    }
}

Symboliser::~Symboliser() {
    if (m_file != nullptr) {
        ::UnmapViewOfFile(m_file);
    }
}

void Symboliser::ReadHeaders() noexcept {
    if (m_size < sizeof(IMAGE_DOS_HEADER)) {
        return;
    }
    const auto headers = static_cast<std::uint32_t>(At<IMAGE_DOS_HEADER>(m_file).e_lfanew);
    constexpr std::uint64_t kFixed = sizeof(DWORD) + sizeof(IMAGE_FILE_HEADER);
    if (headers + kFixed > m_size) {
        return;
    }
    const auto header = At<IMAGE_FILE_HEADER>(m_file + headers + sizeof(DWORD));
    const std::uint64_t sections = headers + kFixed + header.SizeOfOptionalHeader;
    const std::uint64_t symbols = header.PointerToSymbolTable;
    if (sections + std::uint64_t{header.NumberOfSections} * sizeof(IMAGE_SECTION_HEADER) > m_size ||
        symbols + std::uint64_t{header.NumberOfSymbols} * kSymbolSize > m_size) {
        return;
    }
    m_sections = sections;
    m_section_count = header.NumberOfSections;
    m_symbols = symbols;
    m_symbol_count = header.NumberOfSymbols;
}

Symboliser::Section Symboliser::SectionOf(std::uint32_t address) const noexcept {
    for (std::uint16_t i = 0; i < m_section_count; ++i) {
        const auto header =
            At<IMAGE_SECTION_HEADER>(m_file + m_sections + i * sizeof(IMAGE_SECTION_HEADER));
        const std::uint32_t end = header.VirtualAddress + header.Misc.VirtualSize;
        if (address >= header.VirtualAddress && address < end) {
            return {header.VirtualAddress, end, static_cast<std::uint16_t>(i + 1)};
        }
    }
    return {};
}

std::string_view Symboliser::NameAt(const unsigned char* symbol) const noexcept {
    const auto* name = reinterpret_cast<const char*>(symbol);
    if (At<std::uint32_t>(symbol) != 0) {
        return {name, ::strnlen(name, kShortName)};
    }
    const std::uint64_t offset = m_symbols + std::uint64_t{m_symbol_count} * kSymbolSize +
                                 At<std::uint32_t>(symbol + sizeof(std::uint32_t));
    if (offset >= m_size) {
        return {};
    }
    name = reinterpret_cast<const char*>(m_file + offset);
    return {name, ::strnlen(name, m_size - offset)};
}

Symboliser::Symbol Symboliser::Find(std::uint32_t address) const noexcept {
    const Section section = SectionOf(address);
    const unsigned char* best = nullptr;
    std::uint32_t best_value = 0;
    for (std::uint32_t i = 0; section.number != 0 && i < m_symbol_count; ++i) {
        const unsigned char* const symbol = m_file + m_symbols + i * kSymbolSize;
        const auto value = At<std::uint32_t>(symbol + kValue);
        if (At<std::uint16_t>(symbol + kSectionNumber) == section.number &&
            At<std::uint16_t>(symbol + kType) == kFunctionType &&
            value <= address - section.begin && (best == nullptr || value >= best_value)) {
            best = symbol;
            best_value = value;
        }
        i += symbol[kAuxiliaries];
    }
    return best == nullptr ? Symbol{} : Symbol{NameAt(best), section.begin + best_value};
}

}  // namespace wavo::platform
