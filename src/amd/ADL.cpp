#include "amd/ADL.h"

#include <algorithm>
#include <string_view>

namespace gputune::amd {

namespace {

constexpr int kAllAdapters = -1;
constexpr int kEveryAdapter = 0;          // not only those with a display connected
constexpr int kThreadingModelLocked = 1;  // ADL serialises its own calls
constexpr int kActive = 1;
constexpr std::size_t kUsualAdapters = 64;

constexpr log::Tag kInitTag{"[ADL::InitADL()]"};

}  // namespace

void AdlFunctions::ResolveAll(platform::LibraryHandle library) {
#define ADL_FUNCTION(name, ...) name.Resolve(library);
#include "amd/adl_functions.inc"
}

ADL::ADL() {
    if (!InitADL()) {
        log::Entry(log::Tag{"[ADL::ADL()] Initialize ADL"}, "failed");
    }
}

ADL::~ADL() {
    log::Entry(log::Tag{"[ADL::~ADL()] ~ADL"}, "destructor called");
}

bool ADL::InitADL() {
    // Reserved first: when memory runs out here, the library is not open yet, and the next attempt opens it only once.
    m_ActiveAdapters.reserve(kUsualAdapters);
    if (!LoadRuntime()) {
        log::Entry(kInitTag, "ADL initialization failed");
        return false;
    }
    m_Functions.ResolveAll(m_hDll);
    if (!CreateContext() || !EnumerateAdapters()) {
        return false;
    }
    log::Entry(kInitTag, "ADL initialization successful");
    m_Valid = true;
    return true;
}

bool ADL::LoadRuntime() {
    // The name of the 64-bit file first, in a 32-bit process, too: deliberate, as are the words "x64" and "x86".
    m_hDll = platform::LoadLibraryByName(L"atiadlxx.dll");
    if (m_hDll != nullptr) {
        log::Entry(kInitTag / "x64 dll loaded", "atiadlxx.dll");
        return true;
    }
    m_hDll = platform::LoadLibraryByName(L"atiadlxy.dll");
    if (m_hDll != nullptr) {
        log::Entry(kInitTag / "x86 dll loaded", "atiadlxy.dll");
        return true;
    }
    log::Entry(kInitTag, "load adl dll failed");
    return false;
}

bool ADL::CreateContext() {
    if (m_Functions.ADL2_Main_ControlX2_Create(AllocateForAdl, kEveryAdapter, &m_Context, kThreadingModelLocked) !=
        kAdlOk) {
        log::Entry(kInitTag, "ADL2_Main_ControlX2_Create failed");
        return false;
    }
    return true;
}

bool ADL::EnumerateAdapters() {
    if (m_Functions.ADL2_Adapter_AdapterInfoX4_Get(m_Context, kAllAdapters, &m_NumberOfAdapters, m_AdapterInfo.Out()) !=
            kAdlOk ||
        m_NumberOfAdapters < 0) {
        log::Entry(kInitTag, "Unable to get Adapter count");
    }
    log::Entry(kInitTag / "Number of adapters available", m_NumberOfAdapters);

    // A count without a list counts as no adapter.
    auto const adapters = m_AdapterInfo.First(m_NumberOfAdapters);
    if (adapters.empty()) {
        log::Entry(kInitTag, "No available adapter");
        return false;
    }
    for (AdapterInfoX2 const& adapter : adapters) {
        int status = -1;
        if (m_Functions.ADL2_Adapter_Active_Get(m_Context, adapter.iAdapterIndex, &status) == kAdlOk &&
            status == kActive) {
            m_ActiveAdapters.push_back(adapter.iAdapterIndex);
        }
    }
    log::Entry(kInitTag / "number of active adapter", static_cast<int>(m_ActiveAdapters.size()));
    if (!m_ActiveAdapters.empty()) {
        m_AdapterIndex = m_ActiveAdapters.front();
    }
    return true;
}

int ADL::GetSdkVersionSupported() const {
    constexpr log::Tag kTag{"[ADL::GetSdkVersionSupported()]"};
    int supported = 0;
    int enabled = 0;
    int version = 0;
    if (Ask(&AdlFunctions::ADL2_Overdrive_Caps, &supported, &enabled, &version) != kAdlOk) {
        log::Entry(kTag, "ADL2_Overdrive_Caps failed");
        return -1;
    }
    log::Entry(kTag, version);
    return version;
}

bool ADL::SetActiveAdapterIndex(int index) {
    constexpr log::Tag kTag{"[ADL::SetActiveAdapterIndex()]"};
    if (std::find(m_ActiveAdapters.begin(), m_ActiveAdapters.end(), index) == m_ActiveAdapters.end()) {
        log::Entry(kTag, "specified adapter index not found");
        return false;
    }
    if (index == m_AdapterIndex) {
        log::Entry(kTag, "already using the specified adapter index");
        return true;
    }
    m_AdapterIndex = index;
    log::Entry(kTag, "adapter index selected");
    return true;
}

AdapterInfoX2 const* ADL::FirstAdapter() const {
    auto const adapters = m_AdapterInfo.First(m_NumberOfAdapters);
    return adapters.empty() ? nullptr : adapters.data();
}

bool ADL::Succeeded(log::Tag tag, std::optional<int> result, std::string_view success) {
    if (!result) {
        log::Entry(tag, "null ptr");
        return false;
    }
    if (*result != kAdlOk) {
        log::Entry(tag, "failed: ", *result);
        return false;
    }
    if (!success.empty()) {
        log::Entry(tag, success);
    }
    return true;
}

AdapterApiType GetAmdApiType(ADL const& adl) {
    constexpr log::Tag kTag{"[GetAmdApiType(ADL&)]"};
    switch (adl.GetSdkVersionSupported()) {
        case 8:
            log::Entry(kTag, "OD8");
            return AdapterApiType::Overdrive8;
        case 7:
            log::Entry(kTag, "OD7");
            return AdapterApiType::OverdriveN;
        default:
            log::Entry(kTag, "UNKNOWN");
            return AdapterApiType::None;
    }
}

}  // namespace gputune::amd
