// Overdrive8: fan and power limit.
#include <algorithm>

#include "amd/OD8Helper.h"

namespace gputune::amd {

namespace {

constexpr std::string_view kSuccess = "Success";
constexpr std::string_view kFailed = "Failed";

// A speed of the curve as a setting's own number: percent where the range is one of percent, else that share of the
// range's maximum (some drivers count the setting in RPM or MHz). Never outside the range.
int SpeedWithin(ADLOD8SingleInitSetting const& range, int percent) {
    constexpr int kHighestPercent = 100;
    long long const value = range.maxValue <= kHighestPercent
                                ? percent
                                : static_cast<long long>(percent) * range.maxValue / kHighestPercent;
    return static_cast<int>(std::max<long long>(range.minValue, std::min<long long>(range.maxValue, value)));
}

bool Report(log::Tag tag, bool success) {
    log::Entry(tag, success ? kSuccess : kFailed);
    return success;
}

}  // namespace

OD8Helper::ManualMode OD8Helper::SetOptimizedPowerToManualMode() const {
    constexpr log::Tag kTag{"[OD8Helper::SetOptimizedPowerToManualMode()]"};
    auto const current = CurrentSettings(kTag, kOd8OptimizedPowerMode);
    if (!current) {
        return ManualMode::Unreadable;
    }
    if (current->Od8SettingTable[kOd8OptimizedPowerMode] != kOd8OptimizedPowerManual) {
        Request request;
        request.Set(kOd8OptimizedPowerMode, kOd8OptimizedPowerManual);
        if (!Send(request, *current)) {
            log::Entry(kTag, "Failed when set Optimized Power mode to Manual");
            return ManualMode::Refused;
        }
    }
    log::Entry(kTag, "Set Optimized Power mode to Manual");
    return ManualMode::Set;
}

bool OD8Helper::SetFanSpeed(int percent) {
    constexpr log::Tag kTag{"[OD8Helper::SetFanSpeed(int)]"};
    log::Entry(kTag, "Begin");
    if (Has(kOd8HasOptimizedPowerMode)) {
        ManualMode const mode = SetOptimizedPowerToManualMode();
        // Automatic control is restored also where the mode cannot be read.
        if (mode == ManualMode::Refused || (mode == ManualMode::Unreadable && percent >= 0)) {
            return false;
        }
    }
    if (percent < 0) {
        return SetFanToDefault();
    }
    if (!HasFanCurve()) {
        log::Entry(kTag, "ADL_OD8_FAN_CURVE not supported");
        return false;
    }
    // The first point's range governs all five.
    ADLOD8SingleInitSetting const& range = Range(Od8FanSpeed(0));
    if (percent < range.minValue || percent > range.maxValue) {
        log::Entry(kTag, "Percent should be in Min: ", range.minValue, ", Max: ", range.maxValue);
        return false;
    }
    Request request;
    if (Has(kOd8HasZeroRpm)) {
        request.Set(kOd8FanZeroRpm, 0);
        log::Entry(kTag, "plan set ZeroRPM off");
    }
    auto const current = CurrentSettings(kTag, kOd8FanCurveLast);
    if (!current) {
        return false;
    }
    for (int point = 0; point < kOd8FanCurvePoints; ++point) {
        request.Set(Od8FanSpeed(point), percent);
        request.Set(Od8FanTemperature(point), current->Od8SettingTable[Od8FanTemperature(point)]);
    }
    if (Has(kOd8HasFanTargetTemperature)) {
        request.Set(kOd8FanTargetTemperature, Range(kOd8FanTargetTemperature).minValue);
    }
    if (Has(kOd8HasFanMinSpeed)) {
        request.Set(kOd8FanMinSpeed, Range(kOd8FanMinSpeed).minValue);
    }
    if (Has(kOd8HasAcousticLimit)) {
        request.Set(kOd8FanAcousticLimit, Range(kOd8FanAcousticLimit).maxValue);
    }
    return Report(kTag, Send(request, *current));
}

bool OD8Helper::SetFanSpeedTable(FanTablePoint const* table, int count) {
    constexpr log::Tag kTag{"[OD8Helper::SetFanSpeedTable(arr,int)]"};
    log::Entry(kTag, "Begin");
    if (table == nullptr || count < 1) {
        log::Entry(kTag, "pass in node not valid");
        return false;
    }
    if (!HasFanCurve()) {
        log::Entry(kTag, "fan curve not supported");
        return false;
    }
    Request request;
    // The curve always has five points, whatever the count says: deliberate.
    for (int point = 0; point < kOd8FanCurvePoints; ++point) {
        FanTablePoint const& wanted = table[point];
        request.Set(Od8FanSpeed(point), wanted.FanSpeed);
        request.Set(Od8FanTemperature(point), wanted.FanTemperature);
        log::Line(kTag.method, " OD8_FAN_SPEED_ID[", point, "] FanSpeed =", wanted.FanSpeed);
        log::Line(kTag.method, " OD8_FAN_TEMP_ID[", point, "] FanTemperature=", wanted.FanTemperature);
    }
    // So that neither limit cuts the curve: the acoustic limit goes up to its last speed, the lowest speed down to its
    // first.
    if (Has(kOd8HasAcousticLimit)) {
        request.Set(kOd8FanAcousticLimit,
                    SpeedWithin(Range(kOd8FanAcousticLimit), table[kOd8FanCurvePoints - 1].FanSpeed));
    }
    if (Has(kOd8HasFanMinSpeed)) {
        request.Set(kOd8FanMinSpeed, SpeedWithin(Range(kOd8FanMinSpeed), table[0].FanSpeed));
    }
    if (Has(kOd8HasZeroRpm)) {
        request.Set(kOd8FanZeroRpm, 0);
        log::Entry(kTag, "plan set ZeroRPM off");
    }
    return Report(kTag, Send(request, {.count = kOd8Count, .Od8SettingTable = {}}));
}

bool OD8Helper::SetFanToDefault() const {
    constexpr log::Tag kTag{"[OD8Helper::SetFanToDefault()]"};
    Request request;
    auto const reset = [&](int setting) { request.Reset(setting, Range(setting).defaultValue); };

    if (Has(kOd8HasFanCurve)) {
        for (int setting = kOd8FanCurveFirst; setting <= kOd8FanCurveLast; ++setting) {
            reset(setting);
        }
        log::Entry(kTag, "plan reset fan curve");
    }
    if (Has(kOd8HasZeroRpm)) {
        reset(kOd8FanZeroRpm);
        log::Entry(kTag, "plan reset OD8_FAN_ZERORPM_CONTROL");
    }
    if (Has(kOd8HasFanTargetTemperature) && IsRangeRead(kOd8FanTargetTemperature)) {
        // Without the reset mark and without a log entry: deliberate.
        request.Set(kOd8FanTargetTemperature, Range(kOd8FanTargetTemperature).defaultValue);
    }
    if (Has(kOd8HasAcousticLimit)) {
        reset(kOd8FanAcousticLimit);
        log::Entry(kTag, "plan reset OD8_FAN_ACOUSTIC_LIMIT");
    }
    if (Has(kOd8HasFanMinSpeed)) {
        reset(kOd8FanMinSpeed);
        log::Entry(kTag, "plan reset OD8_FAN_MIN_SPEED");
    }
    ADLOD8CurrentSetting current;
    GetCurrentSetting(current);  // the reset goes out also when this fails
    return Report(kTag, Send(request, current));
}

bool OD8Helper::SetPowerLimit(int /*temperatureLimit*/, int powerLimit) {
    constexpr log::Tag kTag{"[OD8Helper::SetPowerLimit(int,int)]"};
    auto const current = CurrentSettings(kTag, kOd8PowerPercentage);
    if (!current) {
        return false;
    }
    if (!Has(kOd8HasPowerLimit)) {
        log::Entry(kTag, "Power limit not supported");
        return false;
    }
    if (Has(kOd8HasGfxClockLimits) && !Has(kOd8HasGfxClockCurve) && Has(kOd8HasOptimizedPowerMode) &&
        SetOptimizedPowerToManualMode() != ManualMode::Set) {
        log::Entry(kTag, "Set Asic to Manual mode failed");
        return false;
    }
    if (current->Od8SettingTable[kOd8PowerPercentage] == powerLimit) {
        // Without its closing bracket: deliberate.
        log::Entry(log::Tag{"[OD8Helper::SetPowerLimit(int,int)"}, "Current value is already the given value");
        return true;
    }
    if (!m_Adl.Has(&AdlFunctions::ADL2_Overdrive8_Setting_Set)) {
        return false;  // without a log entry: deliberate
    }
    Request request;
    request.Set(kOd8PowerPercentage, powerLimit);
    return Report(kTag, Send(request, *current));
}

// Unlike SetPowerLimit it leaves the optimized power mode alone.
bool OD8Helper::SetPowerLimitDefault() {
    constexpr log::Tag kTag{"[OD8Helper::SetPowerLimitDefault()]"};
    if (!Has(kOd8HasPowerLimit)) {
        log::Entry(kTag, "power limit not supported");
        return false;
    }
    auto const current = CurrentSettings(kTag, kOd8PowerPercentage);
    if (!current) {
        return false;
    }
    if (current->Od8SettingTable[kOd8PowerPercentage] == 0) {
        log::Entry(kTag, "power limit is already the default");
        return true;
    }
    Request request;
    request.Reset(kOd8PowerPercentage, 0);
    return Report(kTag, Send(request, *current));
}

void OD8Helper::GetFanSetting(FanSetting& setting) {
    ADLOD8CurrentSetting const current = ShownSettings();
    auto const fill = [&](FanPoint& point, int speed, int temperature) {
        point.DefaultSpeed = Range(speed).defaultValue;
        point.DefaultTemperature = Range(temperature).defaultValue;
        point.MaxSpeed = Range(speed).maxValue;
        point.MinSpeed = Range(speed).minValue;
        point.MaxTemperature = Range(temperature).maxValue;
        point.MinTemperature = Range(temperature).minValue;
        point.CurrentSpeed = current.Od8SettingTable[speed];
        point.CurrentTemperature = current.Od8SettingTable[temperature];
    };
    if (Has(kOd8HasFanCurve)) {
        setting.PointCount = kOd8FanCurvePoints;
        for (int point = 0; point < kOd8FanCurvePoints; ++point) {
            fill(setting.Points[point], Od8FanSpeed(point), Od8FanTemperature(point));
        }
    } else {
        setting.PointCount = 1;
        fill(setting.Points[0], kOd8FanMinSpeed, kOd8FanTargetTemperature);
    }
    setting.Valid = true;
}

void OD8Helper::GetPowerLimitSetting(PowerLimitSetting& setting) {
    ADLOD8CurrentSetting const current = ShownSettings();
    setting.Valid = true;
    setting.Default = Range(kOd8PowerPercentage).defaultValue;
    setting.Max = Range(kOd8PowerPercentage).maxValue;
    setting.Min = Range(kOd8PowerPercentage).minValue;
    setting.Current = current.Od8SettingTable[kOd8PowerPercentage];
}

}  // namespace gputune::amd
