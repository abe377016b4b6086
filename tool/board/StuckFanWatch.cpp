#include "tool/board/StuckFanWatch.h"

#include <utility>

namespace gputune::tool {

bool StuckFanWatch::IsUnsure(std::optional<double> const& speed) {
    constexpr int kBelieved = 8;  // as many equal readings the library reports
    if (!speed) {
        return false;
    }
    bool const wasZero = std::exchange(isZero_, *speed == 0);
    if (isZero_) {
        return equal_ >= kBelieved;
    }
    equal_ = *speed == last_ && !wasZero ? equal_ + 1 : 1;
    last_ = *speed;
    return false;
}

}  // namespace gputune::tool
