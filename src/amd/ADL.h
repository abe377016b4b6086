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
    // Loads and opens the library; m_Valid tells the outcome.
    ADL();

    // The context and the loaded library are left to the end of the process.
    ~ADL();

    ADL(ADL const&) = delete;
    ADL& operator=(ADL const&) = delete;

    // Load, resolve, create the context, enumerate. True also when no adapter is active.
    bool InitADL();

    // The Overdrive version of the current adapter, -1 on failure.
    int GetSdkVersionSupported() const;

    // Make an active adapter the current one. False, and nothing changed, when `index` is not an active adapter.
    bool SetActiveAdapterIndex(int index);

    // The first record of the adapter list, whatever the current adapter is; null when the library did not open.
    AdapterInfoX2 const* FirstAdapter() const;

    // The one way in which the adapters call ADL: `entry` for the current adapter, with the arguments that follow
    // context and adapter index. True when it returned 0; otherwise "null ptr" (the entry point is missing) or
    // "failed: " and the result code is logged, under the method's tag followed by the entry point's name.
    template <FixedString Name, class... Params, class... Args>
    bool Call(log::Tag method, AdlEntry<Name, int(AdlContext, int, Params...)> const& entry, Args... args) const {
        return Judge(method / entry.kName, entry(m_Context, m_AdapterIndex, args...));
    }

    AdlFunctions m_Functions{};
    platform::LibraryHandle m_hDll = nullptr;
    AdlContext m_Context = nullptr;
    std::vector<int> m_ActiveAdapters;  // ADL adapter indices, in enumeration order
    bool m_Valid = false;
    AdlList<AdapterInfoX2> m_AdapterInfo;
    int m_NumberOfAdapters = -1;  // as ADL reported it
    int m_AdapterIndex = -1;

private:
    bool LoadRuntime();
    bool CreateContext();
    bool EnumerateAdapters();
    static bool Judge(log::Tag tag, std::optional<int> result);
};

// By the Overdrive version that ADL reports: 8 or 7; any other is unknown.
AdapterApiType GetAmdApiType(ADL const& adl);

}  // namespace gputune::amd
