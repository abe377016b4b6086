// The library's lifecycle for fuzz targets. The library has one AMD binding in a process; here, every input starts with
// a new one. The exported functions are the library's own.
#pragma once

namespace gputune::fuzz {

// From now on InitVGAHelper finds an Intel or an AMD board.
void BeginLibrary(bool isIntel);

// Deletes the adapter and the AMD binding, which the library keeps until the end of the process.
void EndLibrary();

}  // namespace gputune::fuzz
