// The memory of the library under test: what it takes, and the lack of it. Natively; operator new is this program's
// own.
#pragma once

#include <cstddef>

#include "Machine.h"

namespace gputune::matrix {

// The library's exports, so that what they allocate is told from what the test does.
test::Exports const& WatchedExports(test::Exports const& real);

void CountAllocations();
int Allocations();

// The allocation `first` (from 1) fails, and with `thenAll` all that follow; 0: none does.
void RefuseMemory(int first, bool thenAll);

}  // namespace gputune::matrix
