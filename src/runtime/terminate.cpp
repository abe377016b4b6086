// The runtime's own handler for an uncaught exception prints its demangled type, for which it carries a demangler of 50
// KB. Inside a host nobody reads it: this one takes its place at link time.
#include <cstdlib>

namespace __gnu_cxx {

[[noreturn]] void __verbose_terminate_handler();

[[noreturn]] void __verbose_terminate_handler() {
    std::abort();
}

}  // namespace __gnu_cxx
