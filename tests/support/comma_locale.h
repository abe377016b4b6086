// A host whose locale writes 1.5 as 1,5.
#pragma once

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace gputune::test {

// Sets such a locale for the process: an installed one or, on Linux, one that localedef compiles into the current
// directory. False when there is none. setlocale(LC_ALL, "C") sets the old one again.
inline bool SetCommaLocale() {
    auto const set = [](char const* name) {
        return std::setlocale(LC_ALL, name) != nullptr && std::strcmp(std::localeconv()->decimal_point, ",") == 0;
    };
    for (char const* name : {"German_Germany.1252", "de-DE", "de_DE.UTF-8", "fr_FR.UTF-8"}) {
        if (set(name)) {
            return true;
        }
    }
#if !defined(_WIN32)
    if (std::system("mkdir -p locales && localedef -i de_DE -f UTF-8 ./locales/de_DE.UTF-8 >/dev/null 2>&1") == 0) {
        ::setenv("LOCPATH", "locales", 1);
        return set("de_DE.UTF-8");
    }
#endif
    return false;
}

}  // namespace gputune::test
