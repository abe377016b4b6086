// sensors: one reading of everything the board can measure.
#include "tool/commands/Commands.h"
#include "tool/output/SensorTexts.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

int RunSensors(GlobalOptions const& options, bool all) {
    Session const session(options);
    session.RequireReady();
    Readings const readings = session.ReadSensors();
    std::size_t const available = readings.CountAvailable();

    Result result;
    // JSON always has every key.
    result.Add(SensorSection(readings, session.Vendor(), all || options.json));
    if (!all && available < readings.size()) {
        result.AddRemark(std::to_string(readings.size() - available) + " of " + std::to_string(readings.size()) +
                         " sensors are not available on this board (--all lists them).");
    }
    Print(options, result);
    if (available == 0) {
        throw ToolError("No sensor could be read." + session.LogHint(), {.code = "not_available"});
    }
    return kExitSuccess;
}

}  // namespace

void AddSensorsCommand(CLI::App& app, Context& context) {
    auto const all = std::make_shared<bool>(false);
    CLI::App* sensors = AddCommand(app, context,
                                   {"sensors", "Read the board's sensors once",
                                    "Examples:\n"
                                    "  gputunectl sensors\n"
                                    "  gputunectl sensors --all\n"
                                    "  gputunectl --json sensors"},
                                   RunSensors, all);
    sensors->add_flag("--all", *all, "List the sensors that are not available, too");
}

}  // namespace gputune::tool
