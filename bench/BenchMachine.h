// The library on a machine whose vendor library does next to nothing.
#pragma once

#include "gputune.h"
#include "loading.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::bench {

class BenchMachine {
public:
    // The vendor's library, in the folder of the program, and the caption of the board.
    struct Vendor {
        wchar_t const* library;
        wchar_t const* caption;
    };
    static constexpr Vendor kAmd{L"atiadlxx.dll", L"AMD Radeon RX 580 Series"};
    static constexpr Vendor kIntel{kIs64Bit ? L"ControlLib.dll" : L"ControlLib32.dll",
                                   L"Intel(R) Arc(TM) A770 Graphics"};
    static constexpr Vendor kNvidia{kIs64Bit ? L"nvapi64.dll" : L"nvapi.dll", L"NVIDIA GeForce RTX 4070"};

    // Throws when the library does not open its board.
    explicit BenchMachine(int logMode, Vendor const& vendor = kAmd) : vendorLibrary_(LoadOwn(vendor.library)) {
        wmi_.SetCaptions({{sim::WmiCaption::Kind::Text, vendor.caption}});
        if (!Export<decltype(&::InitVGAHelper)>("InitVGAHelper")(logMode) ||
            !Export<decltype(&::IsInitOk)>("IsInitOk")()) {
            throw std::runtime_error("the library does not open its board");
        }
    }

    template <class Function>
    Function Export(char const* name) const {
        return Find<Function>(library_, name);
    }

    template <class Function>
    Function VendorFunction(char const* name) const {
        return Find<Function>(vendorLibrary_, name);
    }

private:
    sim::WmiStandIn wmi_;
    HMODULE vendorLibrary_;
    HMODULE library_ = LoadLibraryUnderTest();
};

}  // namespace gputune::bench
