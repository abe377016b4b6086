// The library on a machine whose vendor library costs nothing.
#pragma once

#include <windows.h>

#include <filesystem>
#include <stdexcept>

#include "gputune.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::bench {

class BenchMachine {
public:
    // Which vendor's machine it is: its library, in the folder of the program, and the name of its board.
    struct Vendor {
        wchar_t const* library;
        wchar_t const* caption;
    };
    static constexpr Vendor kAmd{L"atiadlxx.dll", L"AMD Radeon RX 580 Series"};
    static constexpr Vendor kIntel{L"ControlLib32.dll", L"Intel(R) Arc(TM) A770 Graphics"};
    static constexpr Vendor kNvidia{L"nvapi.dll", L"NVIDIA GeForce RTX 4070"};

    // Throws when anything is missing: a figure of a machine that did not open would be worth nothing.
    explicit BenchMachine(int logMode, Vendor const& vendor = kAmd) {
        wchar_t path[MAX_PATH];
        DWORD const length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
        auto const directory = std::filesystem::path(std::wstring(path, length)).parent_path();
        vendorLibrary_ = Load(directory / vendor.library);
        library_ = Load(directory.parent_path() / "bin" / "gputune.dll");
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
    static HMODULE Load(std::filesystem::path const& path) {
        HMODULE const module = ::LoadLibraryW(path.c_str());
        if (module == nullptr) {
            throw std::runtime_error("cannot load " + path.string());
        }
        return module;
    }

    template <class Function>
    static Function Find(HMODULE module, char const* name) {
        auto* const address = reinterpret_cast<void*>(::GetProcAddress(module, name));
        if (address == nullptr) {
            throw std::runtime_error(std::string("no export ") + name);
        }
        return reinterpret_cast<Function>(address);
    }

    sim::WmiStandIn wmi_;
    HMODULE vendorLibrary_ = nullptr;
    HMODULE library_ = nullptr;
};

}  // namespace gputune::bench
