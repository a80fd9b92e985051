// Stores against a plain model of them: whatever is done to a store, its content reads back to the
// same store, and is written the same a second time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/mini_data.h"

namespace wavo {
namespace {

using Entries = std::vector<std::pair<std::string, std::string>>;
using Sections = std::vector<std::pair<std::string, Entries>>;

template <typename List>
auto Find(List& list, const std::string& name) {
    return std::find_if(list.begin(), list.end(),
                        [&](const auto& item) { return item.first == name; });
}

void ExpectSame(const MIniData& store, const Sections& model) {
    std::vector<std::string> names;
    for (const auto& [section, entries] : model) {
        names.push_back(section);
        std::vector<std::string> entry_names;
        for (const auto& [name, value] : entries) {
            entry_names.push_back(name);
            std::string found;
            ASSERT_TRUE(store.GetStringEntry(section, name, found)) << section << "/" << name;
            ASSERT_EQ(found, value);
        }
        ASSERT_EQ(store.EntryNames(section), entry_names);
    }
    ASSERT_EQ(store.SectionNames(), names);
}

class MiniDataContent : public ::testing::TestWithParam<unsigned> {
 protected:
    unsigned Random(unsigned range) { return static_cast<unsigned>(m_random() % range); }

    std::string RandomText(unsigned longest) {
        static const std::string kCharacters = "ab c\t;=][#*/\"\\0.,\x01\xC3\xA4\xFF";
        std::string text;
        for (unsigned n = Random(longest + 1); n > 0; --n) {
            text += kCharacters[Random(static_cast<unsigned>(kCharacters.size()))];
        }
        return text;
    }
    /// A name of few, so that they meet again.
    std::string RandomName() {
        const std::string name = "n" + std::to_string(Random(40));
        return Random(10) == 0 ? name + " [x] ;y" : name;
    }
    std::string RandomSection() {
        return std::string(1 + Random(2), 's') + std::to_string(Random(5));
    }

    /// One change to both.
    void Change(MIniData& store, Sections& model) {
        const std::string section = RandomSection();
        const std::string name = RandomName();
        const auto found = Find(model, section);
        switch (Random(12)) {
            case 0: {
                const bool is_there =
                    found != model.end() && Find(found->second, name) != found->second.end();
                ASSERT_EQ(store.DeleteEntry(section, name), is_there);
                if (is_there) {
                    found->second.erase(Find(found->second, name));
                }
                return;
            }
            case 1:
                if (Random(5) == 0) {
                    ASSERT_EQ(store.DeleteSection(section), found != model.end());
                    if (found != model.end()) {
                        model.erase(found);
                    }
                }
                return;
            default: {
                const std::string value = RandomText(Random(20) == 0 ? 5000 : 12);
                ASSERT_TRUE(store.SetStringEntry(section, name, value));
                Entries& entries = found != model.end()
                                       ? found->second
                                       : model.emplace_back(section, Entries()).second;
                const auto entry = Find(entries, name);
                if (entry != entries.end()) {
                    entry->second = value;
                } else {
                    entries.emplace_back(name, value);
                }
            }
        }
    }

 private:
    std::mt19937 m_random{GetParam()};
};

TEST_P(MiniDataContent, ReadsBackToTheSameStoreAfterAnyChanges) {
    MIniData store;
    Sections model;
    for (int round = 0; round < 40; ++round) {
        for (int i = 0; i < 30; ++i) {
            ASSERT_NO_FATAL_FAILURE(Change(store, model));
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSame(store, model));
        const std::string content = store.Content();
        MIniData read;
        ASSERT_TRUE(read.SetContent(content)) << read.LastErrorText();
        ASSERT_NO_FATAL_FAILURE(ExpectSame(read, model));
        ASSERT_EQ(read.Content(), content);
        if (round % 10 == 9) {
            ASSERT_TRUE(store.SetContent(content));
        }
    }
}

TEST_P(MiniDataContent, KeepsEveryLineOfAHandMadeFile) {
    std::string content;
    std::string kept;
    const auto add = [&](const std::string& line) {
        content += line + (Random(2) == 0 ? "\n" : "\r\n");
        kept += line.empty() ? "" : line + "\r\n";
    };
    for (unsigned section = 0; section < 30; ++section) {
        for (unsigned i = 0; i < Random(5); ++i) {
            add(std::vector<std::string>{"", " ", "\t \t", "; " + RandomText(20), " #",
                                         "/*" + RandomText(5)}[Random(6)]);
        }
        add("[" + std::string(Random(3), ' ') + std::to_string(section) + "]" + RandomText(6));
        for (unsigned entry = 0; entry < Random(40); ++entry) {
            add(std::string(Random(3), ' ') + "e" + std::to_string(entry) +
                std::string(Random(3), ' ') + "=" + RandomText(10));
            if (Random(5) == 0) {
                add(";" + RandomText(9));
            }
        }
    }
    MIniData store;
    ASSERT_TRUE(store.SetContent(content)) << store.LastErrorText();
    ASSERT_EQ(store.Content(), kept);
    // A change of one entry changes one line.
    const std::vector<std::string> names = store.EntryNames("3");
    if (!names.empty()) {
        std::string value;
        ASSERT_TRUE(store.GetStringEntry("3", names.back(), value));
        ASSERT_TRUE(store.SetStringEntry("3", names.back(), value + "1"));
        const std::string changed = store.Content();
        EXPECT_EQ(std::count(changed.begin(), changed.end(), '\n'),
                  std::count(kept.begin(), kept.end(), '\n'));
        EXPECT_NE(changed, kept);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MiniDataContent, ::testing::Range(1U, 21U));

TEST(MiniDataContentSize, SettingOneEntryForEverDoesNotEatTheMemory) {
    MIniData store;
    ASSERT_TRUE(store.SetContent("[A]\nx=1\n"));
    for (int i = 0; i < 200000; ++i) {
        ASSERT_TRUE(store.SetLongEntry("A", "x", i % 1000));
    }
    EXPECT_EQ(store.Content(), "[A]\r\nx=999\r\n");
}

}  // namespace
}  // namespace wavo
