#include <cstddef>
#include <filesystem>
#include <iterator>

#include "resources.h"

// A function of the address sanitizer, whose header is not installed with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();

namespace gputune::test {

namespace {

long long CountIn(char const* directory) {
    return std::distance(std::filesystem::directory_iterator(directory), std::filesystem::directory_iterator{});
}

}  // namespace

Resources ResourcesNow() {
    Resources now;
    now.bytes = static_cast<long long>(__sanitizer_get_current_allocated_bytes());
    now.handles = CountIn("/proc/self/fd");
    now.threads = CountIn("/proc/self/task");
    return now;
}

}  // namespace gputune::test
