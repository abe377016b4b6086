// Counts the allocations of the library under test, and lets them fail. Natively; the program has an operator new of
// its own.
#pragma once

#include <cstddef>

#include "Machine.h"

namespace gputune::matrix {

// The library's exports, wrapped so that what they allocate is told from what the test allocates.
test::Exports const& WatchedExports(test::Exports const& real);

void CountAllocations();
int Allocations();

// See Surroundings::RefuseMemory.
void RefuseMemory(int first, bool thenAll);

}  // namespace gputune::matrix
