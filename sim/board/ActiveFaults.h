// The faults of a board while its library is called: which of them strike, by the calls so far and the time.
#pragma once

#include <string_view>
#include <vector>

#include "sim/board/Board.h"

namespace gputune::sim {

// What a call meets. More than one can be set.
struct FaultStrike {
    std::optional<int> result{};  // returned at once
    Garbage garbage = Garbage::None;
    bool crash = false;
    std::optional<double> hang{};  // seconds; 0: for good
    bool forgets = false;          // all settings go before the call
    bool forgetsOthers = false;    // those but the fans' go after the call, when it succeeds
};

class ActiveFaults {
public:
    ActiveFaults() = default;
    explicit ActiveFaults(std::vector<Fault> faults);

    // A call of this entry point begins, at this time in seconds.
    FaultStrike Strike(std::string_view entryPoint, double now);
    // Whether one of kStuckQuantities is stuck at this time.
    bool IsStuck(std::size_t quantity, double now) const;

    // How often each entry point with a fault was called, and which settings were forgotten.
    template <class Archive>
    void Exchange(Archive& archive) {
        archive(counts_);
    }

private:
    std::vector<Fault> faults_;
    // For each fault: the calls of its entry point so far. For one that strikes once, at its time: 1 when it has
    // struck.
    std::vector<std::int32_t> counts_;
};

}  // namespace gputune::sim
