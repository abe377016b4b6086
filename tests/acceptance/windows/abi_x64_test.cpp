// What every export of the 64-bit library owes its caller: the registers that a function has to preserve, and a way
// back that the system's unwinder finds.
#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <map>

#include "../ctl_client.h"
#include "ImportHook.h"
#include "boards.h"
#include "machine_windows.h"
#include "patterned_call.h"

// Where the function that CallWithPatterns calls returns to.
extern "C" char gputune_call_returns[];

namespace gputune::test {
namespace {

Lines ExportedNames() {
    auto const at = [](DWORD offset) { return reinterpret_cast<unsigned char*>(LibraryUnderTest()) + offset; };
    auto const* const dos = reinterpret_cast<IMAGE_DOS_HEADER const*>(at(0));
    auto const* const headers = reinterpret_cast<IMAGE_NT_HEADERS const*>(at(static_cast<DWORD>(dos->e_lfanew)));
    auto const* const exports = reinterpret_cast<IMAGE_EXPORT_DIRECTORY const*>(
        at(headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress));
    auto const* const names = reinterpret_cast<DWORD const*>(at(exports->AddressOfNames));
    Lines all;
    for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
        all.emplace_back(reinterpret_cast<char const*>(at(names[index])));
    }
    return all;
}

using Words = std::vector<Word>;

// For forwarded functions, some of which take a record: every word points to one.
Words WordsForAll() {
    static unsigned char record[2000];
    return Words(kMaxWords, Number(record));
}

// The table of exports says which functions there are, so every one is called.
TEST(AbiX64, EveryExportPreservesTheCallersRegisters) {
    Machine machine = OverdriveNBoard();
    machine.Add(Machine::Library::Intel);
    ASSERT_TRUE(machine.Init());
    InitArgs init;
    PathArgs path(kName.c_str());
    void* handle = nullptr;
    alignas(16) unsigned char record[2000];
    std::map<std::string, Words> const arguments = {
        {"InitVGAHelper", {GPUTUNE_LOG_FILE}},
        {"IsInitOk", {}},
        {"GetVendorInfo", {}},
        {"SetActiveAdapterIndex", {5}},
        {"GetActiveAdapterIndex", {}},
        {"GetVGAInfo", {Number(record)}},
        {"FetchHwmValues", {}},
        {"GetHwmValue", {Number(record), 2}},
        {"GetFrameRate", {}},
        {"SetFanSpeed", {40}},
        {"SetFanSpeedTable", {0, 5}},
        {"GetFanSetting", {Number(record)}},
        {"SetPowerLimit", {75, 10}},
        {"SetPowerLimitDefault", {}},
        {"GetPowerLimitSetting", {Number(record)}},
        {"SetPerformanceUser", {1200, 1000, 1800, 900}},
        {"SetPerformanceOC", {}},
        {"SetPerformanceDefault", {}},
        {"SetPerformanceSilent", {}},
        {"GetGpuClockSetting", {Number(record)}},
        {"GetMemClockSetting", {Number(record)}},
        {"GetExternalPerformanceParameter", {Number(record), 0x0B361002}},
        {"ctlInit", {Number(&init), Number(&handle)}},
        {"ctlSetRuntimePath", {Number(&path)}},
        {"ctlClose", {static_cast<Word>(kIntelApi)}},
    };
    Lines const forwarded = ForwardedNames();
    Lines const exported = ExportedNames();
    EXPECT_EQ(exported.size(), 117U);
    for (std::string const& name : exported) {
        SCOPED_TRACE(name);
        bool const isForwarded = std::find(forwarded.begin(), forwarded.end(), name) != forwarded.end();
        ASSERT_TRUE(isForwarded || arguments.contains(name)) << "nothing says what it is called with";
        Words words = isForwarded ? WordsForAll() : arguments.at(name);
        words.resize(kMaxWords);
        // The second call finds what the first one has looked up.
        for (int times = 0; times < 2; ++times) {
            CallWithPatterns(host::FindExport(name), words.data());
            EXPECT_EQ(Lost(), "");
        }
    }
}

// ---- Unwinding ----

struct Unwound {
    std::string lost;  // of what the caller has at the return; empty when all is there
    int frames = 0;    // that were left
};

// Whether a function ends here with a jump, in the form that Windows knows as an end: rex.W jmp through a register.
// Wine's unwinder knows none.
bool EndsWithAJump(DWORD64 address) {
    auto const* const code = reinterpret_cast<unsigned char const*>(address);
    return code[0] == 0x48 && code[1] == 0xFF && (code[2] & 0xF8) == 0xE0;
}

// Goes the way back from a place in a function that CallWithPatterns has called.
Unwound UnwindToTheCaller(CONTEXT context) {
    constexpr int kMostFrames = 20;
    auto const end = reinterpret_cast<DWORD64>(gputune_call_returns);
    Unwound unwound;
    for (; context.Rip != end; ++unwound.frames) {
        DWORD64 base = 0;
        PRUNTIME_FUNCTION const function = ::RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        bool const isLeaf = function == nullptr || EndsWithAJump(context.Rip);
        if (unwound.frames == kMostFrames || (isLeaf && unwound.frames > 0)) {
            unwound.lost = "the way back";
            return unwound;
        }
        if (isLeaf) {
            // The innermost one may neither call nor move the stack pointer, or no longer do so.
            context.Rip = *reinterpret_cast<DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
        } else {
            void* data = nullptr;
            DWORD64 frame = 0;
            ::RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &data, &frame, nullptr);
        }
    }
    DWORD64 const general[] = {context.Rbx, context.Rsi, context.Rdi, context.Rbp,
                               context.R12, context.R13, context.R14, context.R15};
    unwound.lost = Lost(general, &context.Xmm6, context.Rsp);
    return unwound;
}

Unwound g_unwound;
void* g_found = nullptr;

// In the place of the system's, so that the way back leads through the thunk that has called the look-up.
FARPROC WINAPI UnwindAndFind(HMODULE, char const*) {
    CONTEXT context;
    ::RtlCaptureContext(&context);
    g_unwound = UnwindToTheCaller(context);
    return reinterpret_cast<FARPROC>(g_found);
}

class UnwindingVendor final : public Interceptor {
public:
    int Answer(char const*, Word const*) override {
        CONTEXT context;
        ::RtlCaptureContext(&context);
        g_unwound = UnwindToTheCaller(context);
        return 0;
    }
};

Machine OpenedLibrary() {
    Machine machine = ControlLibrary();
    EXPECT_EQ(Init(machine), 0);
    return machine;
}

TEST(AbiX64, TheWayBackFromAForwardedFunctionIsFound) {
    Machine machine = OpenedLibrary();
    UnwindingVendor vendor;
    machine.Scripted().AnswerBy(&vendor);
    for (std::string const& name : ForwardedNames()) {
        SCOPED_TRACE(name);
        // Looked up, and known.
        for (int times = 0; times < 2; ++times) {
            g_unwound = {.lost = "not called"};
            CallWithPatterns(host::FindExport(name), WordsForAll().data());
            EXPECT_EQ(g_unwound.lost, "");
            EXPECT_GE(g_unwound.frames, 3);
        }
    }
    machine.Scripted().AnswerBy(nullptr);
}

TEST(AbiX64, TheWayBackFromTheLookUpIsFound) {
    Machine machine = OpenedLibrary();
    g_found = host::FindExport("IsInitOk");
    std::vector<void*> functions;
    for (std::string const& name : ForwardedNames()) {
        functions.push_back(host::FindExport(name));
    }
    Words const words = WordsForAll();
    ImportHook const hook("GetProcAddress", UnwindAndFind);
    for (void* const function : functions) {
        g_unwound = {.lost = "not called"};
        CallWithPatterns(function, words.data());
        EXPECT_EQ(g_unwound.lost, "");
        EXPECT_GE(g_unwound.frames, 3);
    }
}

// ---- At every instruction ----

constexpr DWORD kTrap = 0x100;
int g_steps = 0;       // in the library under test
std::string g_failed;  // where the way back was not found
int g_depth = 0;       // calls that have not returned; 0 before the first
DWORD64 g_begin = 0;
DWORD64 g_end = 0;

// What an instruction does to it: a call of any kind, a return.
int DepthChange(unsigned char const* code) {
    if (code[0] == 0xC3) {
        return -1;
    }
    code += code[0] == 0x41 ? 1 : 0;
    return code[0] == 0xE8 || (code[0] == 0xFF && (code[1] & 0x38) == 0x10) ? 1 : 0;
}

LONG CALLBACK Step(EXCEPTION_POINTERS* exception) {
    if (exception->ExceptionRecord->ExceptionCode != static_cast<DWORD>(EXCEPTION_SINGLE_STEP)) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    CONTEXT& context = *exception->ContextRecord;
    if (context.Rip == reinterpret_cast<DWORD64>(gputune_call_returns)) {
        context.EFlags &= ~kTrap;
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    if (context.Rip >= g_begin && context.Rip < g_end) {
        ++g_steps;
        Unwound const unwound = UnwindToTheCaller(context);
        g_depth = std::max(g_depth, 1);
        if ((!unwound.lost.empty() || unwound.frames != g_depth) && g_failed.empty()) {
            g_failed = std::to_string(context.Rip - g_begin) + ": " + unwound.lost + "frame " +
                       std::to_string(g_depth) + " of " + std::to_string(unwound.frames);
        }
    }
    if (g_depth > 0) {
        g_depth += DepthChange(reinterpret_cast<unsigned char const*>(context.Rip));
    }
    context.EFlags |= kTrap;
    return EXCEPTION_CONTINUE_EXECUTION;
}

int AnswerFour() {
    return 4;
}

FARPROC WINAPI JustFind(HMODULE, char const*) {
    return reinterpret_cast<FARPROC>(g_found);
}

void Trap(bool isOn) {
    __asm__ volatile(
        "pushfq\n\t"
        "andq $~0x100, (%%rsp)\n\t"
        "orq %0, (%%rsp)\n\t"
        "popfq\n\t"
        :
        : "r"(isOn ? DWORD64{kTrap} : DWORD64{0})
        : "memory", "cc");
}

TEST(AbiX64, TheWayBackIsFoundFromEveryInstruction) {
    Machine machine = OpenedLibrary();
    auto const* const library = reinterpret_cast<unsigned char const*>(LibraryUnderTest());
    auto const* const dos = reinterpret_cast<IMAGE_DOS_HEADER const*>(library);
    auto const* const headers = reinterpret_cast<IMAGE_NT_HEADERS const*>(library + dos->e_lfanew);
    g_begin = reinterpret_cast<DWORD64>(library);
    g_end = g_begin + headers->OptionalHeader.SizeOfImage;
    g_found = reinterpret_cast<void*>(&AnswerFour);
    void* const function = host::FindExport("ctlEnumFans");
    Words const words = WordsForAll();
    ImportHook const hook("GetProcAddress", JustFind);
    PVOID const handler = ::AddVectoredExceptionHandler(1, Step);
    // Looked up, and known.
    for (int const fewest : {20, 5}) {
        g_steps = 0;
        g_depth = 0;
        Trap(true);
        std::uint64_t const result = CallWithPatterns(function, words.data());
        Trap(false);
        EXPECT_EQ(result, 4U);
        EXPECT_EQ(Lost(), "");
        EXPECT_GE(g_steps, fewest);
        EXPECT_EQ(g_failed, "");
    }
    ::RemoveVectoredExceptionHandler(handler);
}

}  // namespace
}  // namespace gputune::test
