// What the board shows of its settings.
#pragma once

#include <optional>

#include "gputune.h"
#include "tool/board/Session.h"
#include "tool/values/BoardSettings.h"

namespace gputune::tool {

// The power limit in effect. OverdriveN boards report it as a sensor.
std::optional<double> CurrentPowerLimit(Session const& session, PowerLimitSetting const& setting,
                                        Readings const& readings);

// Reads all settings but those that boards report as sensors, which are in `readings`.
BoardSettings ReadShownSettings(Session const& session, Readings const& readings);

}  // namespace gputune::tool
