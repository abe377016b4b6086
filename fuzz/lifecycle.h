// The library's lifecycle as fuzz targets need it: the exported functions are the library's own, but the library has
// one AMD binding in a process, and here every input begins with a new one.
#pragma once

namespace gputune::fuzz {

// From now on InitVGAHelper finds an Intel or an AMD board.
void BeginLibrary(bool isIntel);

// What the end of the process would take down.
void EndLibrary();

}  // namespace gputune::fuzz
