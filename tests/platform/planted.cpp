// A library without a signature, which tests put where the careful loading must not find it. Under the name nvapi.dll
// it is a small NVAPI, which any thread may call. With GPUTUNE_SHOW_PLANTED in the environment it prints its path when
// it is loaded.
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

// Lets the next initialisation succeed as the first one does.
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
