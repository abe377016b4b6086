// info: which board was found, and whether it can be used.
#include "tool/commands/Commands.h"
#include "tool/system/Console.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

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
    AdapterIdentity const identity = session.Identity();
    Value const index = session.State() == InitState::Ready ? IntValue(session.Api().GetActiveAdapterIndex()) : Value{};

    Name const vendor = VendorName(session.Vendor());
    Name const api = ApiName(session.ApiType());
    Name const state = InitStateName(session.State());
    auto const pick = [&options](Name const& name) { return std::string(options.json ? name.code : name.text); };
    std::vector<Controller> const controllers = session.Controllers();
    Result result;
    result.Add({.fields = {{"vendor", "Vendor", pick(vendor)},
                           {"api", "Interface", pick(api)},
                           {"adapter_name", "Adapter", TextValue(identity.name)},
                           {"subsystem_id", "Subsystem id", TextValue(identity.subsystemIdText)},
                           {"bus_number", "Bus number", IntValue(identity.busNumber)},
                           {"active_adapter_index", "Active adapter index", index},
                           {"state", "State", pick(state)},
                           {"width", "Library", std::string(kWidth)}},
                .grids = options.json ? std::vector{ControllerGrid(controllers)} : std::vector<Grid>()});
    // When the board cannot be used, the error message says the same.
    if (session.State() == InitState::Ready) {
        for (std::string const& remark : Remarks(session, controllers)) {
            result.AddRemark(remark);
        }
    }
    Print(options, result);
    session.RequireReady();
    return kExitSuccess;
}

}  // namespace

void AddInfoCommand(CLI::App& app, Context& context) {
    AddCommand(app, context,
               {"info", "Show the board that was found and its identity",
                "Examples:\n"
                "  gputunectl info\n"
                "  gputunectl --simulate boards\\my-board.json info\n"
                "  gputunectl --adapter 1 --json info"},
               RunInfo);
}

}  // namespace gputune::tool
