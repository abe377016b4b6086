#include "api/current_adapter.h"

#include <utility>

#include "adapter/AdapterApiType.h"
#include "amd/ADL.h"
#include "amd/OD7Helper.h"
#include "amd/OD8Helper.h"
#include "detect/GpuVendor.h"
#include "intel/IGCLHelper.h"
#include "log/DebugLog.h"
#include "nvidia/NVAPIHelper.h"

namespace gputune::api {

namespace {

constinit IVideoAdapter* g_currentAdapter = nullptr;
constinit GpuVendor g_vendor = GpuVendor::Unknown;
constinit AdapterApiType g_apiType = AdapterApiType::None;

// Built on first need, once per process, also when two threads come at the same time.
amd::ADL& AdlInstance() {
    static amd::ADL adl;
    return adl;
}

nvidia::Nvapi& NvapiInstance() {
    static nvidia::Nvapi nvapi;
    return nvapi;
}

std::unique_ptr<IVideoAdapter> CreateAmdAdapter() {
    amd::ADL& adl = AdlInstance();
    if (!adl.IsValid()) {
        return nullptr;
    }
    g_apiType = amd::GetAmdApiType(adl);
    switch (g_apiType) {
        case AdapterApiType::Overdrive8:
            return std::make_unique<amd::OD8Helper>(adl);
        case AdapterApiType::OverdriveN:
            return std::make_unique<amd::OD7Helper>(adl);
        default:
            return nullptr;
    }
}

std::unique_ptr<IVideoAdapter> CreateAdapter(GpuVendor vendor) {
    switch (vendor) {
        case GpuVendor::Amd:
            return CreateAmdAdapter();
        case GpuVendor::Intel:
            g_apiType = AdapterApiType::Igcl;
            return std::make_unique<intel::IGCLHelper>();
        case GpuVendor::Nvidia:
            g_apiType = AdapterApiType::Nvapi;
            return std::make_unique<nvidia::NVAPIHelper>(NvapiInstance());
        case GpuVendor::Unknown:
            break;
    }
    return nullptr;
}

void Install(std::unique_ptr<IVideoAdapter> next) {
    // Constructed after the log and the ADL object, so that the clean-up at unload deletes the adapter before them.
    static std::unique_ptr<IVideoAdapter> owner;
    std::unique_ptr<IVideoAdapter> const previous = std::exchange(owner, std::move(next));
    g_currentAdapter = owner.get();
    // `previous` is deleted with the new adapter already in place.
}

}  // namespace

bool InitializeAdapter(int logMode) {
    log::DebugLog::Get(logMode);
    g_vendor = GpuVendor::Unknown;
    g_apiType = AdapterApiType::None;

    g_vendor = GetVendor();
    std::unique_ptr<IVideoAdapter> adapter = CreateAdapter(g_vendor);
    if (!adapter) {
        return false;
    }
    Install(std::move(adapter));
    return true;
}

IVideoAdapter* CurrentAdapter() {
    return g_currentAdapter;
}

std::uint64_t VendorInfo() {
    return static_cast<std::uint64_t>(g_apiType) << 32 | static_cast<std::uint64_t>(g_vendor);
}

}  // namespace gputune::api
