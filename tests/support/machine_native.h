// What only native tests can set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "Machine.h"

namespace gputune::test {

// The system's graphics kernel opens a display of this name, and says that it is this video present source.
void SetDisplay(std::wstring const& name, std::uint32_t source);

// malloc and calloc fail for exactly this size, after `served` times that they succeed. Size 0 ends that.
void RefuseAllocationsOf(std::size_t size, int served = 0);

// `refuse` is asked before every malloc and calloc of the library under test and of the test itself; when it returns
// true, they fail. Null ends that.
void RefuseAllocationsBy(bool (*refuse)());

// The vendors' libraries that are loaded now; one that was loaded twice counts twice.
int LoadedLibraries();

// Uninstalls a library, which keeps its orders; host::InstallLibrary installs it again.
void RemoveLibrary(Machine::Library library);

// Forgets the machine and all of the above, for a process that tests many machines one after the other. Call it when
// the library under test has unloaded the vendors' libraries.
void ForgetMachine();

}  // namespace gputune::test
