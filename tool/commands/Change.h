// The steps of a command that changes the board, and the board's state, which is shown and compared afterwards.
#pragma once

#include <string>
#include <vector>

#include "tool/board/ReadBack.h"
#include "tool/board/Session.h"
#include "tool/output/Result.h"

namespace gputune::tool {

// ---- The steps, in their order ----

// Throws ToolError when the board was not opened, UnsupportedError when it is one that this library only monitors.
void RequireTunable(Session const& session);
// Asks the user whether to do `change` ("Set the fan speed to 60 %"), unless --yes was given or standard input is no
// console. Throws ToolError when the answer is no.
void ConfirmChange(Session const& session, GlobalOptions const& options, std::string const& change);
// The same for the board of this name, which may be empty.
void ConfirmChange(std::string const& name, GlobalOptions const& options, std::string const& change);
// Throws ToolError with a hint at the log when `done` is false. `what` names the change: "the fan speed".
void RequireDone(Session const& session, bool done, std::string const& what);

// A change for which the library's function returned success.
struct Change {
    std::string command;   // as typed, for JSON: "fan set"
    std::string what;      // what was sent: "fan speed 60 %"
    std::string sentence;  // when it is done: "Fan speed set to 60 %."
    ReadBack readBack;
    std::vector<Section> sections;  // the new state
};

// Prints the result: the sentence, or that the change is not confirmed, and the new state as far as it can be read.
// Returns the exit code; throws ToolError after printing when the board shows another state.
int FinishChange(Session const& session, GlobalOptions const& options, Change change);

// ---- The state ----

// `available` is false when nothing can be read.
Section FanSection(Session const& session);
Section PowerSection(Session const& session);
Section GpuClockSection(Session const& session);
Section MemoryClockSection(Session const& session);

// Compares the limit in effect with `percent`, cut to the board's range. Does nothing on boards without a power limit.
void ComparePowerLimit(Session const& session, double percent, ReadBack& readBack);
// Compares the clock in effect with `megahertz`.
void CompareClock(char const* what, double megahertz, ClockSetting const& setting, ReadBack& readBack);
// Compares clocks and power limit with the defaults that the board reports.
ReadBack CompareDefaults(Session const& session);

}  // namespace gputune::tool
