// What Intel's driver answered to a fan operation, for each fan. It is read from the library's log, because the
// library's functions return true whether or not the fans took the setting.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/board/LogEntries.h"

namespace gputune::tool {

struct FanAnswer {
    enum class Kind {
        NothingSent,  // the fan takes fixed speeds only, and a curve was to be set
        Accepted,
        Refused,
        UnknownMode  // the fan reports an unknown mode, so nothing was sent to it
    };

    Kind kind = Kind::NothingSent;
    std::string why{};  // of a refusal: the driver's code and its name
};

struct FanAnswers {
    std::vector<FanAnswer> fans;             // in the driver's order; empty when the log does not tell
    std::optional<int> expectedPoints = {};  // set when the curve had another number of points than the fan takes

    std::size_t Count(FanAnswer::Kind kind) const;
    // "Fan 2 refused it: 1073741824 ([...])." for each fan that did not take the setting.
    std::vector<std::string> Problems() const;
};

// `entries`: what the library logged during that operation.
FanAnswers ReadFanAnswers(LogEntries const& entries);

}  // namespace gputune::tool
