#include "tool/board/ShownSettings.h"

#include "tool/board/Checks.h"
#include "tool/values/FanCurve.h"

namespace gputune::tool {

std::optional<double> CurrentPowerLimit(Session const& session, PowerLimitSetting const& setting,
                                        Readings const& readings) {
    // The Overdrive8 backend always reads the value in effect, so its -1 is -1 %.
    if (IsAdjustable(setting) && (setting.Current != -1 || session.ApiType() == GPUTUNE_API_OVERDRIVE8)) {
        return setting.Current;
    }
    return readings[GPUTUNE_HWM_TDP_LIMIT];
}

BoardSettings ReadShownSettings(Session const& session, Readings const& readings) {
    // 0 is no clock and no voltage of a running board: it stands for what cannot be read.
    auto const positive = [](bool valid, int value) {
        return valid && value > 0 ? std::optional<double>(value) : std::nullopt;
    };
    Library const& api = session.Api();
    ClockSetting const gpu = api.GetGpuClockSetting();
    ClockSetting const memory = api.GetMemClockSetting();
    // Overdrive8 boards show all settings or -1 everywhere, and -1 alone could be a power limit of -1 %.
    bool const isShown = session.ApiType() != GPUTUNE_API_OVERDRIVE8 || !gpu.Valid || gpu.CurrentClock != -1;
    return {.fanCurve = FanCurveOf(api.ReadFanSetting()),
            .powerLimit = isShown ? CurrentPowerLimit(session, api.GetPowerLimitSetting(), readings) : std::nullopt,
            .temperatureLimit = readings[GPUTUNE_HWM_TEMPERATURE_LIMIT],
            .gpuClock = positive(gpu.Valid, gpu.CurrentClock),
            .gpuVoltage = positive(gpu.Valid, gpu.CurrentVoltage),
            .memoryClock = positive(memory.Valid, memory.CurrentClock)};
}

}  // namespace gputune::tool
