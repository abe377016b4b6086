// A DLL with the file name of the compiler's unwinder. It counts its calls, and unlike the real one it can be unloaded.
#include <atomic>

namespace {

std::atomic<int> g_calls = 0;

}  // namespace

extern "C" {

__declspec(dllexport) void __register_frame_info(void const* tables, void* object);
__declspec(dllexport) void* __deregister_frame_info(void const* tables);
__declspec(dllexport) int Unwinder_Calls();

void __register_frame_info(void const* /*tables*/, void* /*object*/) {
    ++g_calls;
}

void* __deregister_frame_info(void const* /*tables*/) {
    ++g_calls;
    return nullptr;
}

int Unwinder_Calls() {
    return g_calls;
}

}  // extern "C"
