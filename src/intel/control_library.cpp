#include "intel/control_library.h"

#include <utility>

#include "intel/ctl_forwarders.h"
#include "platform/library.h"

namespace gputune::intel::control_library {

namespace {

constinit platform::LibraryHandle g_library = nullptr;

}  // namespace

bool IsLoaded() {
    return g_library != nullptr;
}

bool Load(wchar_t const* path) {
    platform::LibraryHandle const library = platform::LoadLibraryWithFlags(path, platform::kSearchSystemDirectory);
    // Again: a call that ran at the same time as the last Unload may have stored an entry point after it.
    ForgetForwardedEntries();
    g_library = library;
    return IsLoaded();
}

void Unload() {
    ForgetForwardedEntries();
    platform::UnloadLibrary(std::exchange(g_library, nullptr));
}

void* Find(char const* name) {
    return IsLoaded() ? platform::FindSymbol(g_library, name) : nullptr;
}

}  // namespace gputune::intel::control_library
