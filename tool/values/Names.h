// What the library's numbers are called: vendors, interfaces, sensors and units, each with the text people read and the
// stable code that JSON and CSV carry. Codes are part of the tool's interface: add new ones, do not change old ones.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "gputune.h"

namespace gputune::tool {

enum class Unit { None, Megahertz, Celsius, Percent, Rpm, Watt, Megabyte, Millivolt, FramesPerSecond, Raw };

// What a sensor measures: sensors of one quantity are shown together and in one colour.
enum class Quantity { Clock, Temperature, Fan, Load, Power, Memory, Voltage, FrameRate };

struct Name {
    char const* text;  // UTF-8
    char const* code;  // ASCII, lower case
};

struct SensorName {
    GputuneHwmKey key;
    char const* text;  // the display name the library gives the key
    char const* code;
    Unit unit;
    Quantity quantity;
};

// The sensor with key k is at position k.
extern std::array<SensorName, GPUTUNE_HWM_KEY_COUNT> const kSensorNames;

// In which order quantities are shown on pages.
extern std::array<Quantity, 8> const kQuantityOrder;

// Whether the sensor of this code is a limit that belongs to other readings of its quantity.
bool IsLimit(std::string_view code);

// Both empty for Unit::None.
Name UnitName(Unit unit);
// In the plural: "Clocks".
char const* QuantityName(Quantity quantity);
// A number the table does not know is called "unknown".
Name VendorName(std::uint32_t vendor);
Name ApiName(std::uint32_t api);
// The possible file names of the vendor's control library, and all of them as one text: "a.dll or b.dll".
std::span<char const* const> ControlLibraryFiles(std::uint32_t vendor);
std::string ControlLibraryNames(std::uint32_t vendor);
// The driver that installs it, for messages.
char const* DriverName(std::uint32_t vendor);

// The width of this process, and so of the library that it loads.
inline constexpr char const* kWidth = sizeof(void*) == 8 ? "64-bit" : "32-bit";

// The frame rate is shown like a sensor, but read by another function.
constexpr Name kFrameRateName{"Frame rate", "frame_rate"};

// Why a fan's speed of 0 may be wrong (StuckFanWatch).
inline constexpr Name kUnsureFan{"unsure: the fan stopped, or ran at one speed for so long that the library reports 0",
                                 "stopped_or_steady"};

// The unit of a sensor on boards of this vendor: Intel's load is a raw activity counter.
Unit SensorUnit(SensorName const& sensor, std::uint32_t vendor);

}  // namespace gputune::tool
