#include "scripted_adl.h"

#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "scripted_adl_exports.h"

#if defined(_WIN32)
#define SCRIPTED_CDECL __cdecl
#define SCRIPTED_STDCALL __stdcall
#else
#define SCRIPTED_CDECL __attribute__((cdecl))
#define SCRIPTED_STDCALL __attribute__((stdcall))
#endif

namespace {

// What is recorded of a call: how many arguments the entry point has, and which of them points to a record that the
// caller fills in (with its size; a negative size says that the record's first int gives it).
struct Signature {
    int argCount;
    int recordArgument;
    int recordSize;
};

constexpr int kSizeInRecord = -1;

// Entered by hand from the library's published interface, not from the product's declarations.
std::map<std::string, Signature> const& Signatures() {
    static std::map<std::string, Signature> const signatures = {
        {"ADL2_Main_ControlX2_Create", {4, -1, 0}},
        {"ADL2_Adapter_AdapterInfoX4_Get", {4, -1, 0}},
        {"ADL2_Adapter_AdapterInfoX3_Get", {4, -1, 0}},
        {"ADL2_Adapter_Active_Get", {3, 2, 4}},
        {"ADL2_Overdrive_Caps", {5, -1, 0}},
        {"ADL2_Overdrive5_ThermalDevices_Enum", {4, 3, 16}},
        {"ADL2_Overdrive5_FanSpeed_Get", {4, 3, 16}},
        {"ADL2_Overdrive5_FanSpeed_Set", {4, 3, 16}},
        {"ADL2_Overdrive5_FanSpeedToDefault_Set", {3, -1, 0}},
        {"ADL2_OverdriveN_CapabilitiesX2_Get", {3, 2, 208}},
        {"ADL2_OverdriveN_SystemClocksX2_Get", {3, 2, kSizeInRecord}},
        {"ADL2_OverdriveN_SystemClocksX2_Set", {3, 2, kSizeInRecord}},
        {"ADL2_OverdriveN_MemoryClocksX2_Get", {3, 2, kSizeInRecord}},
        {"ADL2_OverdriveN_MemoryClocksX2_Set", {3, 2, kSizeInRecord}},
        {"ADL2_OverdriveN_FanControl_Get", {3, 2, 32}},
        {"ADL2_OverdriveN_FanControl_Set", {3, 2, 32}},
        {"ADL2_OverdriveN_PowerLimit_Get", {3, 2, 12}},
        {"ADL2_OverdriveN_PowerLimit_Set", {3, 2, 12}},
        {"ADL2_OverdriveN_PerformanceStatus_Get", {3, 2, 72}},
        {"ADL2_OverdriveN_Temperature_Get", {4, 3, 4}},
        {"ADL2_Adapter_VRAMUsage_Get", {3, 2, 4}},
        {"ADL2_Adapter_MemoryInfo_Get", {3, 2, 272}},
        {"ADL2_Overdrive8_Init_Setting_Get", {3, 2, 632}},
        {"ADL2_Overdrive8_Init_SettingX2_Get", {5, 3, 4}},
        {"ADL2_Overdrive8_Current_Setting_Get", {3, 2, 160}},
        {"ADL2_Overdrive8_Current_SettingX2_Get", {4, 2, 4}},
        {"ADL2_Overdrive8_Setting_Set", {4, 2, 472}},
        {"ADL2_New_QueryPMLogData_Get", {3, 2, 2052}},
        {"ADL2_Adapter_FrameMetrics_Get", {4, 3, 4}},
    };
    return signatures;
}

using Bytes = std::vector<unsigned char>;

struct Write {
    int argument;
    int offset;
    Bytes bytes;
};

struct Allocation {
    int argument;
    Bytes bytes;
};

struct Response {
    int result = 0;
    std::vector<Write> writes;
    std::vector<Allocation> allocations;
};

struct Script {
    std::vector<Response> responses{1};
    std::size_t calls = 0;
};

using Allocator = void*(SCRIPTED_STDCALL*)(int);

struct State {
    std::map<std::string, Script> scripts;
    std::set<std::string> hidden;
    std::vector<ScriptedCall> calls;
    Allocator allocator = nullptr;
};

State& TheState() {
    static State state;
    return state;
}

Response& Current(char const* entryPoint) {
    return TheState().scripts[entryPoint].responses.back();
}

Bytes Copy(void const* bytes, int size) {
    auto const* const first = static_cast<unsigned char const*>(bytes);
    return {first, first + size};
}

void* Pointer(int argument) {
    return reinterpret_cast<void*>(argument);
}

void Record(char const* name, Signature const& signature, int const* args) {
    ScriptedCall call{};
    call.entryPoint = name;
    call.argCount = signature.argCount;
    std::memcpy(call.args, args, sizeof(int) * static_cast<std::size_t>(signature.argCount));
    if (signature.recordArgument >= 0 && args[signature.recordArgument] != 0) {
        void const* const record = Pointer(args[signature.recordArgument]);
        int size = signature.recordSize;
        if (size == kSizeInRecord) {
            std::memcpy(&size, record, sizeof size);
        }
        call.recordSize = size < 0 ? 0 : size > SCRIPTED_MAX_RECORD ? SCRIPTED_MAX_RECORD : size;
        std::memcpy(call.record, record, static_cast<std::size_t>(call.recordSize));
    }
    TheState().calls.push_back(call);
}

int Answer(char const* name, int const* args) {
    auto const signature = Signatures().find(name);
    if (signature == Signatures().end()) {
        return -8;  // one that no client of this kind calls
    }
    if (std::strcmp(name, "ADL2_Main_ControlX2_Create") == 0) {
        TheState().allocator = reinterpret_cast<Allocator>(args[0]);
    }
    Record(name, signature->second, args);

    Script& script = TheState().scripts[name];
    Response const& response = script.responses[std::min(script.calls, script.responses.size() - 1)];
    ++script.calls;
    for (Write const& write : response.writes) {
        std::memcpy(static_cast<unsigned char*>(Pointer(args[write.argument])) + write.offset, write.bytes.data(),
                    write.bytes.size());
    }
    for (Allocation const& allocation : response.allocations) {
        bool const isNull = allocation.bytes.empty();
        void* const block = isNull ? nullptr : TheState().allocator(static_cast<int>(allocation.bytes.size()));
        if (block != nullptr) {
            std::memcpy(block, allocation.bytes.data(), allocation.bytes.size());
        }
        std::memcpy(Pointer(args[allocation.argument]), &block, sizeof block);
    }
    return response.result;
}

}  // namespace

// One function serves every entry point: under cdecl the caller pops its arguments, however many there are.
#define ADL_FUNCTION(name, ...)                                                    \
    extern "C" int SCRIPTED_CDECL name(int a, int b, int c, int d, int e, int f) { \
        int const args[SCRIPTED_MAX_ARGS] = {a, b, c, d, e, f};                    \
        return Answer(#name, args);                                                \
    }
#include "amd/adl_functions.inc"

void* ScriptedAdl_Find(char const* name) {
    if (TheState().hidden.contains(name)) {
        return nullptr;
    }
    static std::map<std::string, void*> const entryPoints = {
#define ADL_FUNCTION(name, ...) {#name, reinterpret_cast<void*>(&name)},
#include "amd/adl_functions.inc"
    };
    auto const found = entryPoints.find(name);
    return found == entryPoints.end() ? nullptr : found->second;
}

std::set<std::string> const& ScriptedAdl_Hidden() {
    return TheState().hidden;
}

extern "C" {

void Scripted_Reset(void) {
    TheState() = State{};
    ScriptedAdl_HiddenChanged();
}

void Scripted_Result(char const* entryPoint, int result) {
    Current(entryPoint).result = result;
}

void Scripted_Write(char const* entryPoint, int argument, int offset, void const* bytes, int size) {
    Current(entryPoint).writes.push_back({argument, offset, Copy(bytes, size)});
}

void Scripted_Allocate(char const* entryPoint, int argument, void const* bytes, int size) {
    Current(entryPoint).allocations.push_back({argument, Copy(bytes, size)});
}

void Scripted_Then(char const* entryPoint) {
    TheState().scripts[entryPoint].responses.emplace_back();
}

void Scripted_Hide(char const* entryPoint) {
    TheState().hidden.insert(entryPoint);
    ScriptedAdl_HiddenChanged();
}

int Scripted_CallCount(void) {
    return static_cast<int>(TheState().calls.size());
}

void Scripted_GetCall(int index, ScriptedCall* call) {
    *call = TheState().calls.at(static_cast<std::size_t>(index));
}

void Scripted_ClearCalls(void) {
    TheState().calls.clear();
}

void* Scripted_AskForMemory(int size) {
    return TheState().allocator == nullptr ? nullptr : TheState().allocator(size);
}

void* Scripted_AskWithOddStack(int size) {
    void* block = nullptr;
    Allocator const allocator = TheState().allocator;
    // stdcall: the callee pops the size, so the padding alone is taken back here.
    __asm__ volatile(
        "movl %%esp, %%esi\n\t"
        "andl $-16, %%esp\n\t"
        "subl $8, %%esp\n\t"
        "pushl %2\n\t"
        "call *%1\n\t"
        "movl %%esi, %%esp\n\t"
        : "=a"(block)
        : "r"(allocator), "r"(size)
        : "esi", "ecx", "edx", "memory", "cc");
    return block;
}

}  // extern "C"
