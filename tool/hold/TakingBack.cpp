#include "tool/hold/TakingBack.h"

#include <cmath>
#include <vector>

#include "tool/board/FanChanges.h"
#include "tool/board/FreshReadings.h"
#include "tool/board/ShownSettings.h"
#include "tool/values/Errors.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

using Problems = std::vector<std::string>;

int Whole(std::optional<double> const& value) {
    return value ? static_cast<int>(*value) : 0;
}

void TakeBackFan(Session const& session, Problems& problems) {
    try {
        SentChange const change = SendAutomaticFan(session);
        if (!change.done) {
            problems.emplace_back("The driver refused to take over the fan.");
        }
        for (std::string const& problem : change.readBack.Problems()) {
            problems.push_back(problem);
        }
    } catch (UnsupportedError const&) {
        // No fan takes orders, so none was changed.
    }
}

bool IsShown(std::optional<double> const& before, std::optional<double> const& shown, double tolerance) {
    return !before || (shown && std::fabs(*before - *shown) <= tolerance);
}

bool ClocksAreShown(BoardSettings const& before, BoardSettings const& shown) {
    return IsShown(before.gpuClock, shown.gpuClock, kClockTolerance) &&
           IsShown(before.memoryClock, shown.memoryClock, kClockTolerance);
}

void TakeBackClocks(Session const& session, BoardSettings const& before, Problems& problems) {
    Library const& api = session.Api();
    if (!before.gpuClock || (!before.memoryClock && api.GetMemClockSetting().Valid)) {
        if (!api.SetPerformanceDefault()) {
            problems.emplace_back("The driver refused the default clocks.");
        }
        return;
    }
    // Overdrive8 boards refuse clocks that are in effect.
    if (ClocksAreShown(before, ReadSettingsAnew(session))) {
        return;
    }
    if (!api.SetPerformanceUser(Whole(before.gpuClock), Whole(before.gpuVoltage), Whole(before.memoryClock), 0) ||
        !ClocksAreShown(before, ReadSettingsAnew(session))) {
        problems.emplace_back("The clocks are not what they were before.");
    }
}

void TakeBackPower(Session const& session, BoardSettings const& before, Problems& problems) {
    Library const& api = session.Api();
    bool const needsTemperature = session.ApiType() == GPUTUNE_API_OVERDRIVEN;
    if (!before.powerLimit || (needsTemperature && !before.temperatureLimit)) {
        if (!api.SetPowerLimitDefault()) {
            problems.emplace_back("The driver refused the default power limit.");
        }
        return;
    }
    if (!api.SetPowerLimit(Whole(before.temperatureLimit), Whole(before.powerLimit)) ||
        !IsShown(before.powerLimit, ReadSettingsAnew(session).powerLimit, 0)) {
        problems.emplace_back("The power limit is not what it was before.");
    }
}

}  // namespace

BoardSettings ReadSettingsAnew(Session const& session) {
    std::size_t const mark = session.LogMark();
    Readings readings = session.ReadSensors();
    RemoveStale(readings, session.ApiType(), session.LogSince(mark));
    return ReadShownSettings(session, readings);
}

std::string TakeBackAll(Session const& session, TakeBack const& takeBack) {
    Problems problems;
    if (takeBack.fan) {
        TakeBackFan(session, problems);
    }
    if (takeBack.clocks) {
        TakeBackClocks(session, takeBack.before, problems);
    }
    // Behind the clocks, whose defaults bring that of the power limit with them.
    if (takeBack.power) {
        TakeBackPower(session, takeBack.before, problems);
    }
    return Joined(problems, " ");
}

}  // namespace gputune::tool
