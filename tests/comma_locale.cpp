#include "comma_locale.h"

#include <clocale>

#include "system_facts.h"

namespace wavo::testing {

CommaLocale::CommaLocale() : m_previous(std::setlocale(LC_ALL, nullptr)) {
    SetVariable("LOCPATH", WAVO_TEST_LOCALES);
    if (std::setlocale(LC_ALL, "comma") != nullptr) {
        return;
    }
    UnsetVariable("LOCPATH");
    for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_ALL, name) != nullptr) {
            return;
        }
    }
}

CommaLocale::~CommaLocale() {
    std::setlocale(LC_ALL, m_previous.c_str());
    UnsetVariable("LOCPATH");
}

bool CommaLocale::IsSet() {
    return std::localeconv()->decimal_point[0] == ',';  // NOLINT(concurrency-mt-unsafe)
}

}  // namespace wavo::testing
