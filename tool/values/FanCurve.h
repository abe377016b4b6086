// Fan curves and their texts: points of a temperature and a speed.
#pragma once

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "gputune.h"

namespace gputune::tool {

// The value of fields of FanSetting that the backend did not write. It is no speed and no temperature.
constexpr int kUntouched = std::numeric_limits<int>::min();

// Whether a field of the library's records holds a value. kUntouched and -1 mean that it is not known.
inline bool IsKnown(int field) {
    return field != kUntouched && field != -1;
}

// Says in a sentence what is wrong with the text of a point or a curve.
class FanCurveError : public std::runtime_error {
    using runtime_error::runtime_error;
};

// "40:30" is 40 °C : 30 %. Throws FanCurveError for any other form and for speeds outside 0 to 100.
FanTablePoint ParseFanPoint(std::string const& text);
// Throws FanCurveError when a temperature or a speed is below that of the point before.
std::vector<FanTablePoint> ParseFanCurve(std::vector<std::string> const& points);
// "40:30 50:40".
std::string FanCurveText(std::vector<FanTablePoint> const& curve);

// "point 1" for the first.
std::string FanPointName(std::size_t index);
// The curve in effect; empty when the board has none, or a point of it is not known.
std::vector<FanTablePoint> FanCurveOf(FanSetting const& setting);

}  // namespace gputune::tool
