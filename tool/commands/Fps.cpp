// fps: the frame rate the driver measures.
#include "tool/commands/Commands.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

namespace {

int RunFps(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    int const rate = session.Api().GetFrameRate();

    Result result;
    result.Add({.fields = {{"frame_rate", "Frame rate", IntValue(rate), Unit::FramesPerSecond}}});
    Print(options, result);
    if (rate == -1) {
        if (session.ApiType() != GPUTUNE_API_OVERDRIVE8) {
            throw UnsupportedError("only AMD Overdrive8 boards tell the frame rate.");
        }
        throw ToolError("The driver's frame metrics are not running." + session.LogHint(), {.code = "not_available"});
    }
    return kExitSuccess;
}

}  // namespace

void AddFpsCommand(CLI::App& app, Context& context) {
    AddCommand(app, context,
               {"fps", "Show the frame rate that the driver measures on the board's display",
                "The exit code is 1 when the driver measures none, 3 on boards that do not tell it. Some drivers have "
                "crashed\n"
                "programs that read it.\n"
                "Examples:\n"
                "  gputunectl fps\n"
                "  gputunectl --json fps"},
               RunFps);
}

}  // namespace gputune::tool
