// info: which board was found, and whether it can be used.
#include <cstdio>

#include "Commands.h"
#include "Console.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

Value TextOrNothing(std::string text) {
    return text.empty() ? Value{} : Value{std::move(text)};
}

Value SubsystemText(std::uint32_t id) {
    if (id == 0) {
        return {};
    }
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(id));
    return std::string(text);
}

int RunInfo(GlobalOptions const& options) {
    Session const session(options);
    bool const hasBackend = session.State() == InitState::Ready || session.State() == InitState::AdapterNotOpened;
    VgaInfo const vga = hasBackend ? session.Api().GetVGAInfo() : VgaInfo{};
    // Only AMD's interface tells the identity; elsewhere the record is zero, which is no bus number either.
    bool const hasIdentity = vga.SubsystemId != 0 || vga.AdapterName[0] != '\0' || vga.BusNumber != 0;
    Value const bus = hasIdentity ? IntValue(vga.BusNumber) : Value{};
    Value const index = session.State() == InitState::Ready ? IntValue(session.Api().GetActiveAdapterIndex()) : Value{};

    Name const vendor = VendorName(session.Vendor());
    Name const api = ApiName(session.ApiType());
    Name const state = InitStateName(session.State());
    auto const pick = [&options](Name const& name) { return std::string(options.json ? name.code : name.text); };
    Section section{.key = "", .title = ""};
    section.fields = {
        {"vendor", "Vendor", pick(vendor)},
        {"api", "Interface", pick(api)},
        {"adapter_name", "Adapter", TextOrNothing(hasBackend ? session.AdapterName() : "")},
        {"subsystem_id", "Subsystem id", SubsystemText(vga.SubsystemId)},
        {"bus_number", "Bus number", bus},
        {"active_adapter_index", "Active adapter index", index},
        {"state", "State", pick(state)},
    };
    Report report;
    report.Add(std::move(section));
    Print(options, report);
    session.RequireReady();
    return exitSuccess;
}

}  // namespace

void AddInfoCommand(CLI::App& app, Context& context) {
    CLI::App* info = app.add_subcommand("info", "Show the board that was found and its identity");
    info->footer(
        "Examples:\n"
        "  gputunectl info\n"
        "  gputunectl --simulate boards\\my-board.json info\n"
        "  gputunectl --adapter 1 --json info");
    info->callback([&context] { context.run = [&context] { return RunInfo(context.options); }; });
}

}  // namespace gputune::tool
