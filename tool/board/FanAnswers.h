// What Intel's driver answered to a fan operation, fan by fan, as the library's log tells: its functions answer true
// whether or not the fans took the setting. Independent of the operating system.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/board/LogEntries.h"

namespace gputune::tool {

struct FanAnswer {
    enum class Kind {
        NothingSent,  // a curve, to a fan that takes fixed speeds only
        Accepted,
        Refused,
        UnknownMode  // it says that it takes neither fixed speeds nor tables alone: nothing was sent
    };

    Kind kind = Kind::NothingSent;
    std::string why{};  // of a refusal: the driver's code and its name
};

struct FanAnswers {
    std::vector<FanAnswer> fans;             // in the driver's order; empty when the log does not tell
    std::optional<int> expectedPoints = {};  // of a curve whose number of points was not the fan's

    std::size_t Count(FanAnswer::Kind kind) const;
    // "Fan 2 refused it: 1073741824 ([...])." for each fan that did not take the setting.
    std::vector<std::string> Problems() const;
};

// `entries` are those of the one operation.
FanAnswers ReadFanAnswers(LogEntries const& entries);

}  // namespace gputune::tool
