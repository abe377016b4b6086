// fps: the frame rate the driver measures.
#include "Commands.h"
#include "Errors.h"

namespace gputune::tool {

namespace {

int RunFps(GlobalOptions const& options) {
    Session const session(options);
    session.RequireReady();
    int const rate = session.Api().GetFrameRate();

    Section section{.key = "", .title = ""};
    section.fields = {{"frame_rate", "Frame rate", IntValue(rate), Unit::FramesPerSecond}};
    Report report;
    report.Add(std::move(section));
    Print(options, report);
    if (rate == -1) {
        throw ToolError(session.ApiType() == GPUTUNE_API_OVERDRIVE8
                            ? "The driver's frame metrics are not running." + session.LogHint()
                            : "Only AMD Overdrive8 boards tell the frame rate.");
    }
    return exitSuccess;
}

}  // namespace

void AddFpsCommand(CLI::App& app, Context& context) {
    CLI::App* fps = app.add_subcommand("fps", "Show the frame rate that the driver measures on the board's display");
    fps->footer(
        "The exit code is 1 when no frame rate is available.\n"
        "Examples:\n"
        "  gputunectl fps\n"
        "  gputunectl --json fps");
    fps->callback([&context] { context.run = [&context] { return RunFps(context.options); }; });
}

}  // namespace gputune::tool
