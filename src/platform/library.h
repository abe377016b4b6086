// Loading libraries and finding their entry points.
#pragma once

namespace gputune::platform {

// A loaded library. Never null when the load succeeded; stays loaded for the life of the process.
using LibraryHandle = void*;

// Load a library by its base name, with the loader's usual search. Null on failure.
LibraryHandle LoadLibraryByName(wchar_t const* name);

// The address of an exported entry point, null when the library has none of that name.
void* FindSymbol(LibraryHandle library, char const* name);

}  // namespace gputune::platform
