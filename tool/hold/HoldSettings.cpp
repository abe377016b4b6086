#include "tool/hold/HoldSettings.h"

#include <algorithm>
#include <vector>

#include "tool/board/Checks.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Names.h"
#include "tool/values/Numbers.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// The speed below which the fan of a board with a curve does not go; 0 where the board tells no range.
int Floor(FanSetting const& fan) {
    return fan.Valid && fan.PointCount >= 2 && IsKnown(fan.Points[0].MinSpeed) ? fan.Points[0].MinSpeed : 0;
}

}  // namespace

void FitToBoard(HoldSettings& settings, BoardFacts const& board) {
    if (board.api == GPUTUNE_API_NVAPI) {
        throw UnsupportedError("NVIDIA boards can be monitored, not tuned.");
    }
    if (settings.HoldsFan() && board.api == GPUTUNE_API_OVERDRIVE8 && board.fan.PointCount < 2) {
        throw UnsupportedError("it has no fan whose speed can be set.");
    }
    if (settings.HoldsFan() && !CanUseOwnCurve(settings, board)) {
        for (FanTablePoint const& point : settings.law.points) {
            CheckFanSpeed(point.FanSpeed, board.fan);
        }
        settings.law.floor = Floor(board.fan);
        if (settings.law.zeroRpm) {
            CheckFanSpeed(0, board.fan);
        }
    }
    if (settings.power) {
        CheckPowerLimit(*settings.power, board.power);
    }
    if (!settings.profile.empty() && board.api == GPUTUNE_API_IGCL) {
        throw UnsupportedError("profiles cannot be applied to Intel boards.");
    }
    if (!settings.profile.empty() && board.identityIsOfAnother) {
        throw UnsupportedError("the identity of this adapter is not known, and with it its profile.");
    }
}

bool CanUseOwnCurve(HoldSettings const& settings, BoardFacts const& board) {
    if (!settings.plainCurve || settings.sensor != GPUTUNE_HWM_GPU_TEMPERATURE) {
        return false;
    }
    try {
        CheckCurve(settings.law.points, board.fan, board.api);
        return true;
    } catch (ToolError const&) {
        return false;
    }
}

std::string Describe(HoldSettings const& settings) {
    std::vector<std::string> texts;
    if (settings.HoldsFan()) {
        texts.push_back("fan curve " + FanCurveText(settings.law.points) + " by " + kSensorNames[settings.sensor].text);
    }
    if (!settings.profile.empty()) {
        texts.push_back("the " + settings.profile + " profile");
    }
    if (settings.power) {
        texts.push_back("power limit " + WithUnit(*settings.power, Unit::Percent));
    }
    return Joined(texts, ", ");
}

}  // namespace gputune::tool
