// The compiler's runtime sets 19 KB aside when the library is loaded, for exceptions in want of memory, and relies on
// the end of the process to take them back. A host may load and unload the library any number of times.
namespace __gnu_cxx {

// The runtime's own, for such cases; no header declares it.
void __freeres();

}  // namespace __gnu_cxx

namespace {

struct EmergencyMemory {
    ~EmergencyMemory() { __gnu_cxx::__freeres(); }
};

// Made before all other static objects, so that it goes last: their destructors may still throw.
[[gnu::init_priority(101), gnu::used]] EmergencyMemory g_emergencyMemory;

}  // namespace
