// The steps of a command that changes the board, and the state of the board that is shown and compared afterwards.
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
// Asks whether `change` ("Set the fan speed to 60 %") is to be done, when someone is there to ask and --yes was not
// given. Throws ToolError when the answer is no.
void ConfirmChange(Session const& session, GlobalOptions const& options, std::string const& change);
// Throws ToolError with a hint at the log when `done` is false. `what` names the change: "the fan speed".
void RequireDone(Session const& session, bool done, std::string const& what);

// A change that the driver took, as far as the library's function tells.
struct Change {
    std::string command;   // as typed, for JSON: "fan set"
    std::string what;      // what was sent: "fan speed 60 %"
    std::string sentence;  // when it is done: "Fan speed set to 60 %."
    ReadBack readBack;
    std::vector<Section> sections;  // the new state
};

// Prints the result: the sentence, or that the board does not tell, and the new state as far as it can be read back.
// Returns the exit code; throws ToolError after printing when the board shows something else.
int FinishChange(Session const& session, GlobalOptions const& options, Change change);

// ---- The state ----

// `available` is false when nothing can be read.
Section FanSection(Session const& session);
Section PowerSection(Session const& session);
Section GpuClockSection(Session const& session);
Section MemoryClockSection(Session const& session);

// The limit in effect beside `percent`, cut to the board's range. Nothing is compared on boards that have none.
void ComparePowerLimit(Session const& session, double percent, ReadBack& readBack);
// The clock in effect beside `megahertz`.
void CompareClock(char const* what, double megahertz, ClockSetting const& setting, ReadBack& readBack);
// All that a return to the defaults sets, beside the defaults that the board tells.
ReadBack CompareDefaults(Session const& session);

}  // namespace gputune::tool
