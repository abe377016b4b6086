#include "platform/process.h"

#include <windows.h>

namespace {

constinit bool g_isProcessEnding = false;

}  // namespace

namespace gputune::platform {

bool IsProcessEnding() {
    return g_isProcessEnding;
}

}  // namespace gputune::platform

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* reserved);

// Called before the static objects are destroyed. The last argument tells the end of the process from FreeLibrary.
extern "C" BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, void* reserved) {
    g_isProcessEnding = reason == DLL_PROCESS_DETACH && reserved != nullptr;
    return TRUE;
}
