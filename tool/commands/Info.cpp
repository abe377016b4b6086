// info: which board was found, and whether it can be used.
#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

Value TextOrNothing(std::string text) {
    return text.empty() ? Value{} : Value{std::move(text)};
}

Grid ControllerGrid(std::vector<Controller> const& controllers) {
    Grid grid{.key = "controllers",
              .label = "Display controllers",
              .columns = {{"name", "Name"}, {"vendor", "Vendor"}, {"role", "Role"}},
              .rows = {}};
    for (Controller const& controller : controllers) {
        grid.rows.push_back(
            {controller.name, std::string(VendorName(controller.vendor).code), std::string(RoleCode(controller.role))});
    }
    return grid;
}

std::vector<std::string> Remarks(Session const& session, std::vector<Controller> const& controllers) {
    std::vector<std::string> remarks;
    if (session.IdentityIsOfAnother()) {
        remarks.push_back(
            "Name, subsystem id and bus number of this adapter are not known: the interface tells those of "
            "adapter " +
            std::to_string(session.FirstAdapter()) + " only.");
    }
    if (std::string explanation = ExplainControllers(controllers); !explanation.empty()) {
        remarks.push_back(std::move(explanation));
    }
    return remarks;
}

int RunInfo(GlobalOptions const& options) {
    Session const session(options);
    VgaInfo const vga = session.Identity();
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
        {"adapter_name", "Adapter", TextOrNothing(session.AdapterName())},
        {"subsystem_id", "Subsystem id", vga.SubsystemId == 0 ? Value{} : Value{HexId(vga.SubsystemId)}},
        {"bus_number", "Bus number", bus},
        {"active_adapter_index", "Active adapter index", index},
        {"state", "State", pick(state)},
    };
    std::vector<Controller> const controllers = session.Controllers();
    if (options.json) {
        section.grids = {ControllerGrid(controllers)};
    }
    Report report;
    report.Add(std::move(section));
    // Where the board cannot be used the error message tells the same.
    if (session.State() == InitState::Ready) {
        for (std::string const& remark : Remarks(session, controllers)) {
            report.AddRemark(remark);
        }
    }
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
