// A 64-bit process without memory below 4 GiB. Wine puts heaps and stacks there, where a pointer that was cut to 32
// bits still is the same pointer.
#pragma once

#include <functional>

namespace gputune::test {

// Takes the memory below 4 GiB that is still free away from the process, that of its heaps included, and runs `work` in
// this thread, on a stack that lies above. Not in a thread of its own: it would end when the process does, which Wine
// does not always survive. Returns what `work` returns. To be called before the library under test is loaded.
int RunInHighMemory(std::function<int()> const& work);

}  // namespace gputune::test
