// The changes of the fan: each is sent, and read back.
#pragma once

#include <vector>

#include "gputune.h"
#include "tool/board/ReadBack.h"
#include "tool/board/Session.h"

namespace gputune::tool {

struct SentChange {
    bool done = false;  // the library's function returned success, or a fan said why it did not take the change
    ReadBack readBack{};
};

// The session must keep the library's log: it has the answers of Intel's fans. All three throw UnsupportedError when
// nothing was sent to any fan.

// A fixed speed. On a board with a curve it is the speed of all points.
SentChange SendFanSpeed(Session const& session, int percent);
// Returns the fan to the driver's automatic control.
SentChange SendAutomaticFan(Session const& session);
// Throws UsageError when the curve has another number of points than an Intel fan takes.
SentChange SendFanCurve(Session const& session, std::vector<FanTablePoint> const& curve);

// At most as many as the record has room for.
int CountPoints(FanSetting const& setting);

}  // namespace gputune::tool
