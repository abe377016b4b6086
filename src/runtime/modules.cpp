// Which modules the compiler's start-up code finds. It would look for the DLL of the compiler's unwinder, which a host
// or one of its plug-ins may have brought along, register this library's unwind tables there and keep that DLL in the
// process. The unwinder that is linked in would then know none of them, and every exception would end the process. Here
// there is no such DLL, so the tables go to the unwinder that is linked in.
#include <windows.h>

#include <string_view>

namespace {

HMODULE WINAPI FindModule(char const* name) {
    if (name != nullptr && std::string_view(name).starts_with("libgcc_s_")) {
        return nullptr;
    }
    HMODULE module = nullptr;
    ::GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, name, &module);
    return module;
}

}  // namespace

extern "C" {

// The slot through which all code of this image calls GetModuleHandleA, in the place of the import library's. Constant,
// as the start-up code asks before the first constructor runs.
extern decltype(&::GetModuleHandleA) const kGetModuleHandleA __asm__("__imp__GetModuleHandleA@4");
[[gnu::used]] decltype(&::GetModuleHandleA) const kGetModuleHandleA = FindModule;

}  // extern "C"
