#include "tool/output/SensorTexts.h"

#include "tool/values/Text.h"

namespace gputune::tool {

Section SensorSection(Readings const& readings, std::uint32_t vendor, bool all) {
    Section section{.key = "sensors", .title = "Sensors", .unitForm = Section::UnitForm::BesideValue};
    for (SensorName const& sensor : kSensorNames) {
        std::optional<double> const& reading = readings[sensor.key];
        if (reading || all) {
            section.fields.push_back({sensor.code, sensor.text, ToValue(reading), SensorUnit(sensor, vendor)});
            if (sensor.key == GPUTUNE_HWM_FAN_SPEED_RPM) {
                section.fields.back().canBeUnsure = true;
                section.fields.back().unsure = readings.fanUnsure ? &kUnsureFan : nullptr;
            }
        }
    }
    return section;
}

std::string ReadingsLine(Readings const& readings, std::uint32_t vendor) {
    std::vector<std::string> texts;
    for (SensorName const& sensor : kSensorNames) {
        if (std::optional<double> const& reading = readings[sensor.key]) {
            texts.push_back(std::string(sensor.text) + " " + WithUnit(*reading, SensorUnit(sensor, vendor)));
            if (sensor.key == GPUTUNE_HWM_FAN_SPEED_RPM && readings.fanUnsure) {
                texts.back() += std::string(" (") + kUnsureFan.text + ")";
            }
        }
    }
    return texts.empty() ? "no sensor available" : Joined(texts, ", ");
}

}  // namespace gputune::tool
