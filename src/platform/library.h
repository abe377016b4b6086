// Loading libraries and finding their entry points.
#pragma once

#include <cstdint>

namespace gputune::platform {

// A loaded library. Never null when the load succeeded; stays loaded for the life of the process unless it is unloaded.
using LibraryHandle = void*;

// Load a library by its base name, with the loader's usual search. Null on failure.
LibraryHandle LoadLibraryByName(wchar_t const* name);

// Search the system's own directory only; a full path is loaded from where it points.
constexpr std::uint32_t kSearchSystemDirectory = 0x800;

// Load a library by name or path with the flags of the loader's extended call. Null on failure, with LastError set.
LibraryHandle LoadLibraryWithFlags(wchar_t const* path, std::uint32_t flags);

// Give one load back.
void UnloadLibrary(LibraryHandle library);

// The address of an exported entry point, null when the library has none of that name.
void* FindSymbol(LibraryHandle library, char const* name);

}  // namespace gputune::platform
