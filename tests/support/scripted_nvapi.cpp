// The scripted NVAPI library: one export, nvapi_QueryInterface, which returns the other functions' addresses by
// identifier. Asking for an identifier is recorded as a call with this one argument. For a hidden function it returns
// null.
#include "Outside.h"
#include "ScriptedCore.h"

// Name, identifier and signature of each function, entered by hand from the published interface. The two hooks are
// hidden until a test calls Show.
#define NVAPI_FUNCTIONS(FUNCTION)                                   \
    FUNCTION(NvAPI_Initialize, 0x0150E828, {""})                    \
    FUNCTION(InitializeWithMode, 0xAD298D3F, {"i"})                 \
    FUNCTION(NvAPI_GetErrorMessage, 0x6C2D048C, {"ip"})             \
    FUNCTION(NvAPI_GetInterfaceVersionString, 0x01053FA5, {"p"})    \
    FUNCTION(NvAPI_EnumPhysicalGPUs, 0xE5AC921F, {"pp"})            \
    FUNCTION(NvAPI_GPU_GetFullName, 0xCEEE8E9F, {"pp"})             \
    FUNCTION(NvAPI_GPU_GetThermalSettings, 0xE3640A56, {"pir", 68}) \
    FUNCTION(BeforeCallHook, 0x33C7358C, {"ir", 8})                 \
    FUNCTION(AfterCallHook, 0x593E8644, {"iiii"})

namespace {

using gputune::test::ScriptedNvapi;

[[maybe_unused]] gputune::test::ScriptedCore& Core() {
    return ScriptedNvapi();
}

}  // namespace

#define DEFINE(name, identifier, ...) SCRIPTED_FUNCTION(name)
NVAPI_FUNCTIONS(DEFINE)
#undef DEFINE

extern "C" void* SCRIPTED_CDECL SCRIPTED_NAME(nvapi_QueryInterface)(unsigned identifier) {
    gputune::test::Outside const outside;
    gputune::test::Word const words[gputune::test::kMaxWords] = {static_cast<int>(identifier)};
    Core().Answer("nvapi_QueryInterface", words, nullptr);
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
        .signatures = {{"nvapi_QueryInterface", {"i"}}, NVAPI_FUNCTIONS(SIGNATURE)},
        .unusual = {"BeforeCallHook", "AfterCallHook"},
    });
#undef SIGNATURE
#undef ENTRY
    return core;
}
