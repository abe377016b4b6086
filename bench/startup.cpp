// startup <what>
//
// Measures what only the first time in a process shows. Prints how many microseconds <what> took, then waits for the
// end of its input, so that bench/report.py can look at the process from outside.
//
//     load-floor   loading an empty DLL of the same compiler        load   loading gputune.dll
//     init-floor   the query for the graphics card and the vendor's calls of a start, made by hand
//     init         InitVGAHelper
//
// The start asks the machine's own WMI, which must name an AMD graphics card. "own-init-floor" and "own-init" ask a WMI
// in this process that answers at once: their difference is what the library itself adds. The vendor's library is
// null_adl.cpp.
#include <windows.h>

#include <comutil.h>
#include <wbemidl.h>
#include <wrl/client.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

#include "amd/adl_records.h"
#include "gputune.h"
#include "loading.h"
#include "sim/wmi/WmiStandIn.h"

namespace {

using gputune::bench::Find;
using gputune::bench::LoadOwn;
using Microsoft::WRL::ComPtr;

void Require(bool holds, char const* what) {
    if (!holds) {
        throw std::runtime_error(what);
    }
}

// ---- Loading ----

// Hosts that use WMI have these loaded: they are not part of the measurement.
void LoadWhatHostsHave() {
    for (wchar_t const* name : {L"ole32.dll", L"oleaut32.dll", L"advapi32.dll"}) {
        ::LoadLibraryW(name);
    }
}

void LoadEmpty() {
    LoadOwn(L"empty.dll");
}

HMODULE g_library = nullptr;

void LoadGputune() {
    g_library = gputune::bench::LoadLibraryUnderTest();
}

// ---- The start ----

std::wstring QueryCaption() {
    Require(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED)), "CoInitializeEx");
    std::wstring caption;
    {
        ::CoInitializeSecurity(nullptr, -1, nullptr, nullptr, RPC_C_AUTHN_LEVEL_DEFAULT, RPC_C_IMP_LEVEL_IMPERSONATE,
                               nullptr, EOAC_NONE, nullptr);
        ComPtr<IWbemLocator> locator;
        ComPtr<IWbemServices> services;
        ComPtr<IEnumWbemClassObject> objects;
        Require(SUCCEEDED(::CoCreateInstance(CLSID_WbemLocator, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&locator))),
                "CoCreateInstance");
        Require(SUCCEEDED(locator->ConnectServer(_bstr_t(L"root\\CIMV2"), nullptr, nullptr, nullptr, 0, nullptr,
                                                 nullptr, &services)),
                "ConnectServer");
        ::CoSetProxyBlanket(services.Get(), RPC_C_AUTHN_WINNT, RPC_C_AUTHZ_NONE, nullptr, RPC_C_AUTHN_LEVEL_CALL,
                            RPC_C_IMP_LEVEL_IMPERSONATE, nullptr, EOAC_NONE);
        Require(
            SUCCEEDED(services->ExecQuery(_bstr_t(L"WQL"), _bstr_t(L"SELECT * FROM Win32_VideoController"),
                                          WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY, nullptr, &objects)),
            "ExecQuery");
        for (;;) {
            ComPtr<IWbemClassObject> object;
            ULONG returned = 0;
            objects->Next(static_cast<long>(WBEM_INFINITE), 1, &object, &returned);
            if (returned == 0) {
                break;
            }
            _variant_t value;
            object->Get(L"Caption", 0, &value, nullptr, nullptr);
            caption = V_BSTR(&value);
        }
    }
    ::CoUninitialize();
    return caption;
}

void* __stdcall Allocate(int size) {
    return std::malloc(static_cast<std::size_t>(size));
}

// The calls that open an OverdriveN board, with each entry point looked up once.
void OpenBoardByHand() {
    using namespace gputune::amd;
    HMODULE const adl = ::LoadLibraryW(L"atiadlxx.dll");
    AdlContext context = nullptr;
    int count = 0;
    int status = 0;
    int supported = 0;
    int enabled = 0;
    int version = 0;
    AdapterInfoX2* list = nullptr;
    Find<int (*)(AdlMemoryAllocator, int, AdlContext*, int)>(adl, "ADL2_Main_ControlX2_Create")(Allocate, 0, &context,
                                                                                                1);
    Find<int (*)(AdlContext, int, int*, AdapterInfoX2**)>(adl, "ADL2_Adapter_AdapterInfoX4_Get")(context, -1, &count,
                                                                                                 &list);
    Find<int (*)(AdlContext, int, int*)>(adl, "ADL2_Adapter_Active_Get")(context, 0, &status);
    Find<int (*)(AdlContext, int, int*, int*, int*)>(adl, "ADL2_Overdrive_Caps")(context, 0, &supported, &enabled,
                                                                                 &version);
    Require(count == 1 && status == 1 && version == 7, "not the board that was expected");
    ADLODNCapabilitiesX2 capabilities{};
    Find<int (*)(AdlContext, int, ADLODNCapabilitiesX2*)>(adl, "ADL2_OverdriveN_CapabilitiesX2_Get")(context, 0,
                                                                                                     &capabilities);
    alignas(ADLODNPerformanceLevelsX2) unsigned char levels[4096] = {};
    auto* const table = reinterpret_cast<ADLODNPerformanceLevelsX2*>(levels);
    table->iNumberOfPerformanceLevels = capabilities.iMaximumNumberOfPerformanceLevels;
    using GetLevels = int (*)(AdlContext, int, ADLODNPerformanceLevelsX2*);
    Find<GetLevels>(adl, "ADL2_OverdriveN_SystemClocksX2_Get")(context, 0, table);
    Find<GetLevels>(adl, "ADL2_OverdriveN_MemoryClocksX2_Get")(context, 0, table);
    ADLThermalControllerInfo controller{};
    Find<int (*)(AdlContext, int, int, ADLThermalControllerInfo*)>(adl, "ADL2_Overdrive5_ThermalDevices_Enum")(
        context, 0, 0, &controller);
}

void StartByHand() {
    Require(QueryCaption().find(L"Radeon") != std::wstring::npos, "no AMD graphics card");
    OpenBoardByHand();
}

void Start() {
    Require(Find<decltype(&::InitVGAHelper)>(g_library, "InitVGAHelper")(GPUTUNE_LOG_NONE), "InitVGAHelper failed");
}

struct Measurement {
    void (*prepare)();
    void (*measured)();
};

void PrepareStart() {
    LoadOwn(L"atiadlxx.dll");
    LoadGputune();
}

void PrepareStartWithOwnWmi() {
    PrepareStart();
    static gputune::sim::WmiStandIn wmi;
    wmi.SetCaptions({{gputune::sim::WmiCaption::Kind::Text, L"AMD Radeon RX 580 Series"}});
}

std::map<std::string, Measurement> const kMeasurements = {
    {"load-floor", {LoadWhatHostsHave, LoadEmpty}},
    {"load", {LoadWhatHostsHave, LoadGputune}},
    // Both load the library, so that the processes differ only in what does the work.
    {"init-floor", {PrepareStart, StartByHand}},
    {"init", {PrepareStart, Start}},
    {"own-init-floor", {PrepareStartWithOwnWmi, StartByHand}},
    {"own-init", {PrepareStartWithOwnWmi, Start}},
};

}  // namespace

int main(int argc, char** argv) {
    auto const found = kMeasurements.find(argc > 1 ? argv[1] : "");
    if (found == kMeasurements.end()) {
        std::fputs("startup load-floor|load|init-floor|init|own-init-floor|own-init\n", stderr);
        return 2;
    }
    try {
        found->second.prepare();
        LARGE_INTEGER frequency;
        LARGE_INTEGER before;
        LARGE_INTEGER after;
        ::QueryPerformanceFrequency(&frequency);
        ::QueryPerformanceCounter(&before);
        found->second.measured();
        ::QueryPerformanceCounter(&after);
        std::printf("%.1f\n", static_cast<double>(after.QuadPart - before.QuadPart) * 1e6 /
                                  static_cast<double>(frequency.QuadPart));
        std::fflush(stdout);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "startup %s: %s\n", argv[1], error.what());
        return 1;
    }
    while (std::getchar() != EOF) {
    }
    return 0;
}
