// A library that nobody has signed and that lies where the careful load must not find it; and NVAPI, when it is called
// that. Any thread may call it. Where GPUTUNE_SHOW_PLANTED is in the environment, it says on standard output that it
// has been loaded.
#include <windows.h>

#include <atomic>

#include "nvidia/nvapi_records.h"

using namespace gputune::nvidia;

namespace {

std::atomic<int> g_initializations = 0;

int NVAPI_CDECL Initialize() {
    return ++g_initializations == 1 ? kNvapiOk : kNvapiError;
}

int NVAPI_CDECL VersionString(char* text) {
    text[0] = 'v';
    return kNvapiOk;
}

}  // namespace

extern "C" __declspec(dllexport) void* NVAPI_CDECL nvapi_QueryInterface(std::uint32_t identifier) {
    return identifier == 0x0150E828   ? reinterpret_cast<void*>(&Initialize)
           : identifier == 0x01053FA5 ? reinterpret_cast<void*>(&VersionString)
                                      : nullptr;
}

// The next initialisation is the first again.
extern "C" __declspec(dllexport) void Planted_Forget() {
    g_initializations = 0;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH && ::GetEnvironmentVariableW(L"GPUTUNE_SHOW_PLANTED", nullptr, 0) != 0) {
        char path[MAX_PATH + 16] = "loaded ";
        DWORD length = 7 + ::GetModuleFileNameA(module, path + 7, MAX_PATH);
        path[length++] = '\n';
        ::WriteFile(::GetStdHandle(STD_OUTPUT_HANDLE), path, length, &length, nullptr);
    }
    return TRUE;
}
