// The function table of the AMD Display Library: a typed, named pointer for each entry point of adl_functions.inc.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "amd/adl_records.h"
#include "platform/library.h"

namespace gputune::amd {

// A text as a template argument.
template <std::size_t N>
struct FixedString {
    char text[N];
    consteval FixedString(char const (&literal)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            text[i] = literal[i];
        }
    }
};

// One entry point. Null when the library does not export it, which is no error until it is needed.
template <FixedString Name, class Signature>
struct AdlEntry;

template <FixedString Name, class... Params>
struct AdlEntry<Name, int(Params...)> {
    int(ADL_CDECL* address)(Params...) = nullptr;

    static constexpr std::string_view kName = Name.text;

    void Resolve(platform::LibraryHandle library) {
        address = reinterpret_cast<int(ADL_CDECL*)(Params...)>(platform::FindSymbol(library, Name.text));
    }

    // The library's result code; nothing when the entry point is missing.
    std::optional<int> operator()(Params... args) const {
        return address == nullptr ? std::nullopt : std::optional<int>(address(args...));
    }
};

struct AdlFunctions {
#define ADL_FUNCTION(name, ...) AdlEntry<#name, int(__VA_ARGS__)> name;
#include "amd/adl_functions.inc"

    // Look every entry point up, in order.
    void ResolveAll(platform::LibraryHandle library);
};
static_assert(sizeof(AdlFunctions) == 129 * sizeof(void*));

// Which entry point: `&AdlFunctions::ADL2_Overdrive_Caps`.
template <FixedString Name, class Signature>
using AdlMember = AdlEntry<Name, Signature> AdlFunctions::*;

template <FixedString Name, class Signature>
constexpr std::string_view NameOf(AdlMember<Name, Signature> /*entry*/) {
    return AdlEntry<Name, Signature>::kName;
}

}  // namespace gputune::amd
