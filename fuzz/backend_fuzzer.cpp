// Calls operations of each backend in any order, on a vendor's library whose answers the input decides.
#include <unistd.h>

#include <string>

#include "Input.h"
#include "RandomVendor.h"
#include "boards.h"
#include "intel/ctl_functions.h"
#include "intel_board.h"
#include "lifecycle.h"
#include "log/DebugLog.h"
#include "machine_native.h"
#include "operations.h"
#include "require.h"

namespace {

using namespace gputune;
using fuzz::Input;
using fuzz::Require;

test::Machine Board(unsigned choice) {
    constexpr int kEveryCapability = 0x7FFFF;
    switch (choice) {
        case 0:
            return test::OverdriveNBoard();
        case 1: {
            test::Machine machine = test::Overdrive8Board(kEveryCapability);
            test::OrderDisplays(machine, {"\\\\.\\DISPLAY1"});
            return machine;
        }
        case 2: {
            test::Machine machine = test::Overdrive8Board(kEveryCapability & ~2);
            machine.Hide("ADL2_Overdrive8_Init_SettingX2_Get").Hide("ADL2_Overdrive8_Current_SettingX2_Get");
            return machine;
        }
        default: {
            test::Machine machine = test::IntelBoard({{}, {.handle = test::kDevice + 1}});
            test::OrderFans(machine, {test::FixedFan(), test::TableFan(test::kCurvePoints)});
            return machine;
        }
    }
}

char const* const kAmdEntries[] = {
#define ADL_FUNCTION(name, ...) #name,
#include "amd/adl_functions.inc"
};
char const* const kControlEntries[] = {
#define CTL_FORWARD(name, ...) #name,
#include "intel/ctl_functions.inc"
};

void HideSome(test::Machine& machine, bool isIntel, Input& input) {
    for (unsigned count = input.Below(4); count > 0; --count) {
        unsigned const position = input.Byte();
        machine.Hide(isIntel ? kControlEntries[position % std::size(kControlEntries)]
                             : kAmdEntries[position % std::size(kAmdEntries)]);
    }
}

// A host's own calls of the control library.
void CallControlLibrary(Input& input) {
    static wchar_t path[] = L"ControlLib32.dll";
    static intel::ctl_runtime_path_args_t request{};
    intel::ctl_api_handle_t api = nullptr;
    switch (input.Below(4)) {
        case 0:
            intel::ctlClose(nullptr);
            break;
        case 1:
            intel::ctlInit(nullptr, &api);
            break;
        case 2: {
            intel::ctl_init_args_t args{};
            args.Size = sizeof(args);
            args.AppVersion = static_cast<std::uint32_t>(input.Int());
            intel::ctlInit(&args, &api);
            break;
        }
        default:
            request.Size = sizeof(request);
            request.pRuntimePath = input.Below(2) == 0 ? nullptr : path;
            intel::ctlSetRuntimePath(input.Below(4) == 0 ? nullptr : &request);
    }
}

void Step(test::Exports const& api, Input& input) {
    auto const operations = test::Operations();
    unsigned const choice = input.Byte() % (operations.size() + 2);
    if (choice == operations.size()) {
        api.InitVGAHelper(0);
        return;
    }
    if (choice > operations.size()) {
        CallControlLibrary(input);
        return;
    }
    test::Operation const& operation = operations[choice];
    test::Arguments arguments{};
    for (int position = 0; position < operation.argumentCount; ++position) {
        arguments[static_cast<std::size_t>(position)] = input.Int();
    }
    test::Answer const answer = operation.call(api, arguments);
    Require(answer.breach.empty(), (operation.name + std::string(": ") + answer.breach).c_str());
}

// Removes what would otherwise stay for the next input.
void TakeDown(test::Machine& machine, bool isIntel) {
    fuzz::EndLibrary();
    if (isIntel) {
        machine.Show("ctlClose");
        intel::ctlClose(nullptr);
    }
    test::ForgetMachine();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    // The log is on, so that every line is built, but it goes nowhere.
    unlink("debug.log");
    Require(symlink("/dev/null", "debug.log") == 0, "the log goes nowhere");
    log::DebugLog::Get(GPUTUNE_LOG_FILE);
    // The performance modes need a profile.
    test::Machine(test::Machine::Library::None)
        .WriteProfile(
            R"(<Config><Board Default="1"><Value Name="GpuOC" Normal="1.05"/><Value Name="MemOC" Normal="1.1"/>
            <Value Name="PowerOC" Normal="10"/><Value Name="GpuSilent" Normal="0.9"/></Board></Config>)");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    Input input(data, size);
    test::SetDisplay(L"\\\\.\\DISPLAY1", 0);
    unsigned const board = input.Below(4);
    bool const isIntel = board == 3;
    test::Machine machine = Board(board);
    HideSome(machine, isIntel, input);
    fuzz::BeginLibrary(isIntel);
    test::Exports const& api = machine.Api();
    Input steps = input.Part();
    {
        // The rest of the input decides the vendor's answers.
        fuzz::RandomVendor const vendor(machine.Scripted(), input);
        api.InitVGAHelper(0);
        while (!steps.IsAtEnd()) {
            Step(api, steps);
        }
    }
    // With healthy answers again, every operation must still end without a breach.
    for (test::Operation const& operation : test::Operations()) {
        Require(operation.call(api, {5, 10, 0, 0}).breach.empty(), operation.name);
    }
    TakeDown(machine, isIntel);
    return 0;
}
