// The three control library functions that do more than pass the call on: they load the library, unload it, and say
// where it is. They log nothing.
#include <cstddef>

#include "intel/control_library.h"
#include "intel/ctl_functions.h"

namespace gputune::intel {

namespace {

constexpr ctl_result_t kUnsupportedVersion = 0x40000009;
constexpr ctl_result_t kInvalidNullPointer = 0x4000000E;
constexpr ctl_result_t kLoadFailed = 0x40000026;

constexpr std::uint32_t kNewestMajorVersion = 1;

constexpr wchar_t kLibraryName[] = L"ControlLib32.dll";
constexpr std::size_t kPathSize = 512;  // with the terminator; longer paths are cut

// The caller's own record, which it keeps alive until a ctlInit has succeeded or ctlClose was called: a load that
// failed leaves it here for the next.
constinit ctl_runtime_path_args_t* g_runtimePathRequest = nullptr;

bool HasPath(ctl_runtime_path_args_t const* request) {
    return request != nullptr && request->pRuntimePath != nullptr;
}

void CopyPath(wchar_t const* path, wchar_t (&copy)[kPathSize]) {
    std::size_t length = 0;
    for (; length < kPathSize - 1 && path[length] != L'\0'; ++length) {
        copy[length] = path[length];
    }
    copy[length] = L'\0';
}

// Call a function of the loaded library, if it has one of that name.
template <class... Params>
ctl_result_t CallLibrary(char const* name, ctl_result_t whenMissing, Params... arguments) {
    using Function = ctl_result_t(CTL_CDECL*)(Params...);
    auto const function = reinterpret_cast<Function>(control_library::Find(name));
    return function == nullptr ? whenMissing : function(arguments...);
}

// 0 when the library is loaded.
ctl_result_t LoadControlLibrary(ctl_init_args_t const* args) {
    wchar_t requested[kPathSize];
    wchar_t const* path = kLibraryName;
    if (HasPath(g_runtimePathRequest)) {
        // The requested library checks the version itself.
        CopyPath(g_runtimePathRequest->pRuntimePath, requested);
        path = requested;
    } else if (args == nullptr) {
        return kInvalidNullPointer;
    } else if (CtlMajorVersion(args->AppVersion) > kNewestMajorVersion) {
        return kUnsupportedVersion;
    }
    if (!control_library::Load(path)) {
        return kLoadFailed;
    }
    if (g_runtimePathRequest != nullptr) {
        CallLibrary("ctlSetRuntimePath", kCtlNotInitialized, g_runtimePathRequest);
    }
    return 0;
}

}  // namespace

extern "C" {

ctl_result_t CTL_CDECL ctlInit(ctl_init_args_t* args, ctl_api_handle_t* handle) {
    ctl_result_t whenMissing = kCtlNotInitialized;
    if (!control_library::IsLoaded()) {
        whenMissing = LoadControlLibrary(args);
        if (whenMissing != 0) {
            return whenMissing;
        }
    }
    return CallLibrary("ctlInit", whenMissing, args, handle);
}

// Clients are not counted: the first close that the library accepts unloads it for all of them.
ctl_result_t CTL_CDECL ctlClose(ctl_api_handle_t handle) {
    ctl_result_t const result = CallLibrary("ctlClose", kCtlNotInitialized, handle);
    if (result == 0) {
        control_library::Unload();
    }
    g_runtimePathRequest = nullptr;
    return result;
}

ctl_result_t CTL_CDECL ctlSetRuntimePath(ctl_runtime_path_args_t* args) {
    if (control_library::IsLoaded()) {
        return CallLibrary("ctlSetRuntimePath", kCtlNotInitialized, args);
    }
    if (!HasPath(args)) {
        return kCtlNotInitialized;
    }
    g_runtimePathRequest = args;
    return 0;
}

}  // extern "C"

}  // namespace gputune::intel
