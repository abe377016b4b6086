#include "lifecycle.h"

#include <memory>

#include "adapter/IVideoAdapter.h"
#include "amd/OD7Helper.h"
#include "amd/OD8Helper.h"
#include "api/current_adapter.h"
#include "intel/IGCLHelper.h"

namespace {

using namespace gputune;

bool g_isIntel = false;
std::unique_ptr<amd::ADL> g_adl;
std::unique_ptr<IVideoAdapter> g_adapter;
AdapterApiType g_apiType = AdapterApiType::None;

std::unique_ptr<IVideoAdapter> CreateAdapter() {
    if (g_isIntel) {
        g_apiType = AdapterApiType::Igcl;
        return std::make_unique<intel::IGCLHelper>();
    }
    if (g_adl == nullptr) {
        g_adl = std::make_unique<amd::ADL>();
    }
    g_apiType = g_adl->IsValid() ? amd::GetAmdApiType(*g_adl) : AdapterApiType::None;
    switch (g_apiType) {
        case AdapterApiType::OverdriveN:
            return std::make_unique<amd::OD7Helper>(*g_adl);
        case AdapterApiType::Overdrive8:
            return std::make_unique<amd::OD8Helper>(*g_adl);
        default:
            return nullptr;
    }
}

}  // namespace

namespace gputune::fuzz {

void BeginLibrary(bool isIntel) {
    g_isIntel = isIntel;
    g_apiType = AdapterApiType::None;
}

void EndLibrary() {
    g_adapter.reset();
    g_adl.reset();
}

}  // namespace gputune::fuzz

namespace gputune::api {

bool InitializeAdapter(int /*logMode*/) {
    std::unique_ptr<IVideoAdapter> next = CreateAdapter();
    if (next == nullptr) {
        return false;
    }
    g_adapter.swap(next);  // the previous one is deleted at the end
    return true;
}

IVideoAdapter* CurrentAdapter() {
    return g_adapter.get();
}

std::uint64_t VendorInfo() {
    return static_cast<std::uint64_t>(g_apiType) << 32;
}

}  // namespace gputune::api
