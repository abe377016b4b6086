#include "platform/library.h"

#include <windows.h>

namespace gputune::platform {

LibraryHandle LoadLibraryByName(wchar_t const* name) {
    return ::LoadLibraryW(name);
}

static_assert(kSearchSystemDirectory == LOAD_LIBRARY_SEARCH_SYSTEM32);

LibraryHandle LoadLibraryWithFlags(wchar_t const* path, std::uint32_t flags) {
    return ::LoadLibraryExW(path, nullptr, flags);
}

void UnloadLibrary(LibraryHandle library) {
    ::FreeLibrary(static_cast<HMODULE>(library));
}

void* FindSymbol(LibraryHandle library, char const* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace gputune::platform
