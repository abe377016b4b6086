// A part of a host, built as this compiler builds by default: with its runtime in DLLs, which then are in the process.
#include <stdexcept>
#include <string>

extern "C" {

// Whether an exception of the runtime's DLL, thrown through this one, is caught here.
__declspec(dllexport) bool Plugin_CatchesItsOwn();

bool Plugin_CatchesItsOwn() {
    try {
        return std::stoi("no number") != 0 && false;
    } catch (std::invalid_argument const&) {
        return true;
    }
}

}  // extern "C"
