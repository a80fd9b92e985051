// The INI store with any bytes as its file. The first byte of an input chooses options and the
// size of reads; the rest is the file.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "check.h"
#include "memory_files.h"
#include "support/diagnostics.h"
#include "support/mini_data.h"

namespace {

using wavo::MIniData;

constexpr char kPath[] = "folder/fuzzed.ini";

std::string Value(const MIniData& store, const std::string& section, const std::string& name) {
    std::string value;
    CHECK(store.GetStringEntry(section, name, value));
    return value;
}

void CheckSame(const MIniData& a, const MIniData& b) {
    CHECK(a.Content() == b.Content());
    CHECK(a.SectionNames() == b.SectionNames());
    for (const std::string& section : a.SectionNames()) {
        const std::vector<std::string> names = a.EntryNames(section);
        CHECK(names == b.EntryNames(section));
        for (const std::string& name : names) {
            CHECK(Value(a, section, name) == Value(b, section, name));
        }
    }
}

/// The content of a store reads back to the same store.
void CheckReadsBack(const MIniData& store, unsigned options) {
    MIniData read(options);
    CHECK(read.SetContent(store.Content()));
    CheckSame(store, read);
}

void ChangeEverything(MIniData& store, std::string_view text) {
    const std::string name(text.substr(0, text.size() / 3));
    const std::string value(text.substr(text.size() / 3));
    std::size_t count = 0;
    for (const std::string& section : store.SectionNames()) {
        for (const std::string& entry : store.EntryNames(section)) {
            // Changing, deleting and making entries, in turn.
            switch (count++ % 3) {
                case 0:
                    if (store.SetStringEntry(section, entry, value)) {
                        CHECK(Value(store, section, entry) == value);
                    }
                    break;
                case 1:
                    CHECK(store.DeleteEntry(section, entry));
                    CHECK(!store.DeleteEntry(section, entry));
                    break;
                default:
                    if (store.SetDoubleEntry(section, name, 0.1)) {
                        CHECK(Value(store, section, name) == "0.10000000000000001");
                    }
            }
        }
        if (count % 7 == 6) {
            CHECK(store.DeleteSection(section));
            CHECK(!store.HasSection(section));
        }
    }
    if (store.SetStringEntry(value, name, name)) {
        CHECK(Value(store, value, name) == name);
    }
}

void Run(unsigned choice, std::string_view content) {
    constexpr unsigned kOptionBits[] = {MIniData::kLenientEntries, MIniData::kReplaceSections,
                                        MIniData::kReplaceEntries, MIniData::kSaveSafe};
    constexpr std::size_t kReads[] = {SIZE_MAX, 1, 2, 3, 7, 64, 100, 8191};
    unsigned options = 0;
    for (unsigned bit = 0; bit < 4; ++bit) {
        options |= (choice >> bit & 1U) != 0 ? kOptionBits[bit] : 0;
    }
    wavo::fuzzing::MemoryFiles files(kReads[choice >> 4 & 7U]);
    files.Put(kPath, content);
    MIniData store(options);
    MIniData same(options);
    const bool is_open = store.Open(kPath);
    CHECK(is_open == same.SetContent(content));
    CHECK(is_open == store.IsValid());
    CHECK(is_open == store.LastErrorText().empty());
    CheckSame(store, same);
    if (is_open) {
        CheckReadsBack(store, options);
        CHECK(store.Save());
        CHECK(files.Get(kPath) == store.Content());
        ChangeEverything(store, content.substr(0, 40));
        CheckReadsBack(store, options);
        CHECK(store.Save());
        CHECK(files.Get(kPath) == store.Content());
        CHECK(store.Open(kPath));
        CHECK(store.Content() == files.Get(kPath));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Reports are not what is looked at here, and there are many.
    MErrTrace_BeginContext();
    if (size > 0) {
        Run(data[0], {reinterpret_cast<const char*>(data) + 1, size - 1});
    }
    MErrTrace_ClearContext();
    MErrTrace_EndContext();
    return 0;
}
