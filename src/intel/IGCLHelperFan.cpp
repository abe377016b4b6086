// Fan control.
#include <algorithm>
#include <string>

#include "intel/IGCLHelper.h"
#include "intel/ctl_functions.h"

namespace gputune::intel {

namespace {

constexpr log::Tag kSpeedTag{"[IGCLHelper::SetFanSpeed(int)]"};
constexpr log::Tag kTableTag{"[IGCLHelper::SetFanSpeedTable(obj,int)]"};
constexpr log::Tag kDefaultTag{"[IGCLHelper::SetFanDefault()]"};

void PrintFanProperties(log::Tag tag, ctl_fan_properties_t const& fan) {
    log::Line(tag.method, " >>>>>>> Fan properties");
    log::Line(tag.method, " Can Control: ", fan.canControl != 0 ? 1 : 0);
    log::Line(tag.method, " Max Points: ", fan.maxPoints);
    log::Line(tag.method, " Max RPM: ", fan.maxRPM);
    log::Line(tag.method, " Supported Modes: ", fan.supportedModes);
    log::Line(tag.method, " Supported Units: ", fan.supportedUnits);
    log::Line(tag.method, " <<<<<<< Fan properties");
}

void PrintUnknownMode() {
    // Also for SetFanSpeedTable: deliberate.
    log::Line(kSpeedTag.method, " ?????");
}

// A fan may claim more points than the record holds: the others are left out.
int PointsInRecord(int points) {
    return std::min(points, kCtlFanTableSize);
}

// The configuration that the fan now has. A failing read shows zeros.
void PrintFanConfig(log::Tag tag, ctl_fan_handle_t fan, int maxPoints) {
    ctl_fan_config_t config{};
    config.Size = sizeof config;
    Succeeded(tag / "ctlFanGetConfig", ctlFanGetConfig(fan, &config));
    log::Entry(tag / "(verify) mode", config.mode);
    log::Entry(tag / "(verify) num of fan nodes", config.speedTable.numPoints);
    for (int node = 0; node < PointsInRecord(maxPoints); ++node) {
        ctl_fan_temp_speed_t const& point = config.speedTable.table[node];
        std::string const subject = "(verify) node #" + std::to_string(node) + " temp/speed/units";
        log::Entry(tag / subject, point.temperature, "/", point.speed.speed, "/",
                   static_cast<std::int32_t>(point.speed.units));
    }
}

ctl_fan_speed_table_t EmptyTable(int numPoints) {
    ctl_fan_speed_table_t table{};
    table.Size = sizeof table;
    table.numPoints = PointsInRecord(numPoints);
    return table;
}

void SetFixedSpeed(ctl_fan_handle_t fan, int percent) {
    constexpr log::Tag kTag = kSpeedTag / "ctlFanSetFixedSpeedMode";
    ctl_fan_speed_t speed{};
    speed.Size = sizeof speed;
    speed.speed = percent;
    speed.units = kCtlFanUnitsPercent;
    if (Succeeded(kTag, ctlFanSetFixedSpeedMode(fan, &speed))) {
        log::Entry(kTag, "set to ", percent);
    }
}

// The same speed at every point.
void SetFlatTable(ctl_fan_handle_t fan, int maxPoints, int percent) {
    constexpr log::Tag kTag = kSpeedTag / "ctlFanSetSpeedTableMode";
    ctl_fan_speed_table_t table = EmptyTable(maxPoints);
    for (int i = 0; i < table.numPoints; ++i) {
        // Temperatures of 0 and speeds of no size: deliberate, drivers have been given nothing else.
        table.table[i].Size = sizeof(ctl_fan_temp_speed_t);
        table.table[i].speed.speed = percent;
        table.table[i].speed.units = kCtlFanUnitsPercent;
    }
    if (Succeeded(kTag, ctlFanSetSpeedTableMode(fan, &table))) {
        log::Entry(kTag, "set to ", percent);
    }
    PrintFanConfig(kSpeedTag, fan, maxPoints);
}

ctl_fan_speed_table_t ToTable(FanTablePoint const* points, int count) {
    ctl_fan_speed_table_t table = EmptyTable(count);
    for (int i = 0; i < table.numPoints; ++i) {
        // Field by field: what lies between the fields stays zero.
        ctl_fan_temp_speed_t& point = table.table[i];
        point.Size = sizeof point;
        point.temperature = static_cast<std::uint32_t>(points[i].FanTemperature);
        point.speed.Size = sizeof point.speed;
        point.speed.speed = points[i].FanSpeed;
        point.speed.units = kCtlFanUnitsPercent;
    }
    return table;
}

bool SetTable(ctl_fan_handle_t fan, ctl_fan_speed_table_t const& table, int maxPoints) {
    for (int i = 0; i < table.numPoints; ++i) {
        log::Entry(kTableTag / "plan set temp/speed", table.table[i].temperature, "/", table.table[i].speed.speed);
    }
    if (!Succeeded(kTableTag / "ctlFanSetSpeedTableMode", ctlFanSetSpeedTableMode(fan, &table))) {
        return false;
    }
    log::Entry(kTableTag / "fan table", "set");
    PrintFanConfig(kTableTag, fan, maxPoints);
    return true;
}

}  // namespace

template <class Act>
bool IGCLHelper::ForEachFan(log::Tag tag, Act&& act) const {
    log::Entry(tag, "begin");
    std::uint32_t count = 0;
    ctl_result_t const counted = ctlEnumFans(Device(), &count, nullptr);
    if (counted != 0 || count == 0) {
        LogResult(tag / "Fan component not supported", counted);
        return false;
    }
    log::Entry(tag / "Number of Fan Handles", count);

    HandleArray<ctl_fan_handle_t> fans;
    std::uint32_t const capacity = count;
    if (!fans.Allocate(capacity)) {
        log::Entry(tag, "malloc memory for fans failed");
        return false;
    }
    if (!Succeeded(tag / "ctlEnumFans", ctlEnumFans(Device(), &count, fans.Data()))) {
        return false;
    }
    for (std::uint32_t position = 0; position < std::min(count, capacity); ++position) {
        log::Entry(tag, "For fan handle ", position);
        ctl_fan_properties_t properties{};
        properties.Size = sizeof properties;
        if (!Succeeded(tag / "ctlFanGetProperties", ctlFanGetProperties(fans[position], &properties))) {
            continue;
        }
        PrintFanProperties(tag, properties);
        if (act(position, fans[position], properties) == Walk::Stop) {
            return false;
        }
    }
    return true;
}

bool IGCLHelper::SetFanSpeed(int percent) {
    if (percent < 0) {
        return SetFanDefault();
    }
    return ForEachFan(kSpeedTag, [=](std::uint32_t, ctl_fan_handle_t fan, ctl_fan_properties_t const& properties) {
        switch (properties.supportedModes) {
            case kCtlFanModeFixed:
                SetFixedSpeed(fan, percent);
                break;
            case kCtlFanModeTable:
                SetFlatTable(fan, properties.maxPoints, percent);
                break;
            default:
                PrintUnknownMode();
        }
        return Walk::Continue;
    });
}

bool IGCLHelper::SetFanSpeedTable(FanTablePoint const* table, int count) {
    bool anySet = false;
    bool const visitedAll =
        ForEachFan(kTableTag, [&](std::uint32_t, ctl_fan_handle_t fan, ctl_fan_properties_t const& properties) {
            if (count != properties.maxPoints) {
                log::Entry(kTableTag / "nCount not match", "max ponint: ", properties.maxPoints);
                return Walk::Stop;
            }
            switch (properties.supportedModes) {
                case kCtlFanModeFixed:
                    break;
                case kCtlFanModeTable:
                    if (table == nullptr && count > 0) {
                        log::Entry(kTableTag, "null ptr");
                        return Walk::Stop;
                    }
                    anySet |= SetTable(fan, ToTable(table, count), properties.maxPoints);
                    break;
                default:
                    PrintUnknownMode();
            }
            return Walk::Continue;
        });
    return visitedAll && anySet;
}

bool IGCLHelper::SetFanDefault() {
    return ForEachFan(kDefaultTag, [](std::uint32_t position, ctl_fan_handle_t fan, ctl_fan_properties_t const&) {
        if (Succeeded(kDefaultTag / "ctlFanSetDefaultMode", ctlFanSetDefaultMode(fan))) {
            log::Entry(kDefaultTag / ("fan handle #" + std::to_string(position)), "set to default");
        }
        return Walk::Continue;
    });
}

}  // namespace gputune::intel
