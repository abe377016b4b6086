// The process-wide binding to the AMD Display Library: its entry points, one context, the active adapters and the one
// in use. Both AMD adapter classes borrow the one object and call ADL only through it.
#pragma once

#include <optional>
#include <vector>

#include "adapter/AdapterApiType.h"
#include "amd/AdlFunctions.h"
#include "amd/adl_memory.h"
#include "log/DebugLog.h"

namespace gputune::amd {

class ADL {
public:
    // Loads and opens the library; IsValid tells the outcome.
    ADL();

    // The context and the loaded library are left to the end of the process.
    ~ADL();

    ADL(ADL const&) = delete;
    ADL& operator=(ADL const&) = delete;

    // The library is open. True also when no adapter is active.
    bool IsValid() const { return m_Valid; }

    // The Overdrive version of the current adapter, -1 on failure.
    int GetSdkVersionSupported() const;

    // The current adapter, by ADL's own index; -1 when none is active.
    int GetActiveAdapterIndex() const { return m_AdapterIndex; }

    // Make an active adapter the current one. False, and nothing changed, when `index` is not an active adapter.
    bool SetActiveAdapterIndex(int index);

    // The first record of the adapter list, whatever the current adapter is; null when the library did not open.
    AdapterInfoX2 const* FirstAdapter() const;

    // Whether the library exports an entry point.
    template <FixedString Name, class Signature>
    bool Has(AdlMember<Name, Signature> entry) const {
        return (m_Functions.*entry).address != nullptr;
    }

    // The one way in which the adapters call ADL: an entry point for the current adapter, with the arguments that
    // follow context and adapter index. Its result code; nothing when the library does not export it.
    template <FixedString Name, class... Params, class... Args>
    std::optional<int> Ask(AdlMember<Name, int(AdlContext, int, Params...)> entry, Args... args) const {
        return (m_Functions.*entry)(m_Context, m_AdapterIndex, args...);
    }

    // Ask, and true when the answer was 0; otherwise "null ptr" (the entry point is missing) or "failed: " and the
    // result code is logged, under the method's tag followed by the entry point's name.
    template <FixedString Name, class Signature, class... Args>
    bool Call(log::Tag method, AdlMember<Name, Signature> entry, Args... args) const {
        return Succeeded(method / NameOf(entry), Ask(entry, args...));
    }

    // Call, and `success` is logged under the same tag when the answer was 0.
    template <FixedString Name, class Signature, class... Args>
    bool Set(log::Tag method, std::string_view success, AdlMember<Name, Signature> entry, Args... args) const {
        return Succeeded(method / NameOf(entry), Ask(entry, args...), success);
    }

private:
    // Load, resolve, create the context, enumerate.
    bool InitADL();
    bool LoadRuntime();
    bool CreateContext();
    bool EnumerateAdapters();
    static bool Succeeded(log::Tag tag, std::optional<int> result, std::string_view success = {});

    AdlFunctions m_Functions{};
    platform::LibraryHandle m_hDll = nullptr;
    AdlContext m_Context = nullptr;
    std::vector<int> m_ActiveAdapters;  // ADL adapter indices, in enumeration order
    bool m_Valid = false;
    AdlList<AdapterInfoX2> m_AdapterInfo;
    int m_NumberOfAdapters = -1;  // as ADL reported it
    int m_AdapterIndex = -1;
};

// By the Overdrive version that ADL reports: 8 or 7; any other is unknown.
AdapterApiType GetAmdApiType(ADL const& adl);

}  // namespace gputune::amd
