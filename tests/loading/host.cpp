// host <gputune.dll> <step>...
//
// Loads the library by this path and does the steps in order:
//
//   narrow <flags>     SetDefaultDllDirectories
//   start <caption>    InitVGAHelper on a machine with a display controller of this name
//   runtime <path>     ctlSetRuntimePath
//   init               ctlInit: prints its result
//   frames             GetFrameRate
//   unload             FreeLibrary
//   where <library>    prints the path from which a library of this name is loaded, or "absent"
//
// Planted libraries print a line of their own when they are loaded.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#include "gputune.h"
#include "sim/host/module_path.h"
#include "sim/wmi/WmiStandIn.h"

namespace {

using namespace gputune;

HMODULE g_library = nullptr;

template <class Function>
Function Export(char const* name) {
    auto const address = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(g_library, name)));
    if (address == nullptr) {
        throw std::runtime_error(name);
    }
    return address;
}

sim::WmiStandIn& Wmi() {
    static sim::WmiStandIn wmi;
    return wmi;
}

// ctl_runtime_path_args_t. It must exist until ctlInit is called.
struct RuntimePath {
    DWORD words[6] = {32};
    wchar_t const* path = nullptr;
    DWORD device = 0;
};
RuntimePath g_runtimePath;

void PrintPlace(wchar_t const* name) {
    HMODULE const module = ::GetModuleHandleW(name);
    std::printf("%ls: %ls\n", name, module != nullptr ? gputune::sim::ModulePath(module).c_str() : L"absent");
}

// True when the step has an argument.
bool Take(std::wstring const& step, wchar_t const* argument) {
    if (step == L"narrow") {
        ::SetDefaultDllDirectories(std::wcstoul(argument, nullptr, 16));
        return true;
    }
    if (step == L"start") {
        Wmi().SetCaptions({{sim::WmiCaption::Kind::Text, argument}});
        Export<decltype(&::InitVGAHelper)>("InitVGAHelper")(GPUTUNE_LOG_NONE);
        return true;
    }
    if (step == L"runtime") {
        g_runtimePath.path = argument;
        Export<int (*)(RuntimePath*)>("ctlSetRuntimePath")(&g_runtimePath);
        return true;
    }
    if (step == L"where") {
        PrintPlace(argument);
        return true;
    }
    if (step == L"init") {
        DWORD args[9] = {36, 0, 0x00010001};
        void* handle = nullptr;
        std::printf("ctlInit: %X\n", Export<unsigned (*)(DWORD*, void**)>("ctlInit")(args, &handle));
    } else if (step == L"frames") {
        Export<decltype(&::GetFrameRate)>("GetFrameRate")();
    } else if (step == L"unload") {
        ::FreeLibrary(g_library);
    } else {
        throw std::runtime_error("unknown step");
    }
    return false;
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    // In the order of events, with what the planted libraries print.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    try {
        if (count > 1) {
            g_library = ::LoadLibraryW(arguments[1]);
        }
        for (int index = 2; index < count; ++index) {
            index += Take(arguments[index], index + 1 < count ? arguments[index + 1] : L"") ? 1 : 0;
        }
    } catch (std::exception const& error) {
        std::printf("host: %s\n", error.what());
        return 1;
    }
    std::puts("done");
    return 0;
}
