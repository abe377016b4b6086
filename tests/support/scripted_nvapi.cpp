// The scripted NVAPI library: one export, nvapi_QueryInterface, which returns the other functions' addresses by
// identifier. Asking for an identifier is recorded as a call with this one argument. For a hidden function it returns
// null.
#include "Outside.h"
#include "ScriptedCore.h"

// Name, identifier and signature of each function, entered by hand from the published interface. The two hooks are
// hidden until a test calls Show.
#define NVAPI_FUNCTIONS(FUNCTION)                                  \
    FUNCTION(NvAPI_Initialize, 0x0150E828, {0})                    \
    FUNCTION(InitializeWithMode, 0xAD298D3F, {1})                  \
    FUNCTION(NvAPI_GetErrorMessage, 0x6C2D048C, {2})               \
    FUNCTION(NvAPI_GetInterfaceVersionString, 0x01053FA5, {1})     \
    FUNCTION(NvAPI_EnumPhysicalGPUs, 0xE5AC921F, {2})              \
    FUNCTION(NvAPI_GPU_GetFullName, 0xCEEE8E9F, {2})               \
    FUNCTION(NvAPI_GPU_GetThermalSettings, 0xE3640A56, {3, 2, 68}) \
    FUNCTION(BeforeCallHook, 0x33C7358C, {2, 1, 8})                \
    FUNCTION(AfterCallHook, 0x593E8644, {4})

namespace {

using gputune::test::ScriptedNvapi;

int Answer(char const* name, int const* words) {
    return ScriptedNvapi().Answer(name, words);
}

}  // namespace

#define DEFINE(name, identifier, ...) SCRIPTED_FUNCTION(static, name)
NVAPI_FUNCTIONS(DEFINE)
#undef DEFINE

extern "C" void* SCRIPTED_CDECL SCRIPTED_NAME(nvapi_QueryInterface)(unsigned identifier) {
    gputune::test::Outside const outside;
    int const words[gputune::test::kMaxWords] = {static_cast<int>(identifier)};
    Answer("nvapi_QueryInterface", words);
    switch (identifier) {
#define CASE(name, number, ...) \
    case number:                \
        return ScriptedNvapi().Find(#name);
        NVAPI_FUNCTIONS(CASE)
#undef CASE
        default:
            return nullptr;
    }
}

gputune::test::ScriptedCore& gputune::test::ScriptedNvapi() {
#define ENTRY(name, ...) SCRIPTED_ENTRY(name)
#define SIGNATURE(name, identifier, ...) {#name, __VA_ARGS__},
    static ScriptedCore core({
        .entryPoints = {SCRIPTED_ENTRY(nvapi_QueryInterface) NVAPI_FUNCTIONS(ENTRY)},
        .signatures = {{"nvapi_QueryInterface", {1}}, NVAPI_FUNCTIONS(SIGNATURE)},
        .unusual = {"BeforeCallHook", "AfterCallHook"},
    });
#undef SIGNATURE
#undef ENTRY
    return core;
}
