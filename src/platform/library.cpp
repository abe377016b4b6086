#include "platform/library.h"

#include <windows.h>

namespace gputune::platform {

LibraryHandle LoadLibraryByName(wchar_t const* name) {
    return ::LoadLibraryW(name);
}

void* FindSymbol(LibraryHandle library, char const* name) {
    return reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(library), name));
}

}  // namespace gputune::platform
