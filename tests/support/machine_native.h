// What only tests on the native machine can set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Machine.h"

namespace gputune::test {

// A display that the display kernel opens under this name, as this video present source.
void SetDisplay(std::wstring const& name, std::uint32_t source);

// malloc and calloc have nothing of exactly this size for the library under test, but for the next `served` times; 0
// takes it back.
void RefuseAllocationsOf(std::size_t size, int served = 0);

// `refuse` is asked before every malloc and calloc of the library under test, and of the test itself; true is no
// memory. Null takes it back.
void RefuseAllocationsBy(bool (*refuse)());

// The vendors' libraries that are loaded now; one that was loaded twice counts twice.
int LoadedLibraries();

// The machine has it no longer; host::InstallLibrary brings it back as it was.
void RemoveLibrary(Machine::Library library);

// Forget the machine with all of that, for a process with many machines one after the other. The library under test
// holds none of its libraries any more.
void ForgetMachine();

}  // namespace gputune::test
