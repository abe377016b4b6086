// A plug-in of a host, built as this compiler builds by default: with the compiler's runtime in DLLs.
#include <stdexcept>
#include <string>

extern "C" {

// Whether an exception that the runtime's DLL throws is caught here.
__declspec(dllexport) bool Plugin_CatchesItsOwn();

bool Plugin_CatchesItsOwn() {
    try {
        return std::stoi("no number") != 0 && false;
    } catch (std::invalid_argument const&) {
        return true;
    }
}

}  // extern "C"
