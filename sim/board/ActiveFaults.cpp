#include "sim/board/ActiveFaults.h"

#include <algorithm>
#include <utility>

namespace gputune::sim {

namespace {

void Add(FaultStrike& strike, Fault const& fault) {
    switch (fault.kind) {
        case FaultKind::Result:
            strike.result = strike.result.value_or(fault.result);
            break;
        case FaultKind::Garbage:
            strike.garbage = fault.garbage;
            break;
        case FaultKind::Crash:
            strike.crash = true;
            break;
        case FaultKind::Hang:
            strike.hang = fault.seconds;
            break;
        case FaultKind::Forget:
            (fault.othersOnly ? strike.forgetsOthers : strike.forgets) = true;
            break;
        case FaultKind::Missing:
        case FaultKind::Stuck:
            break;
    }
}

}  // namespace

ActiveFaults::ActiveFaults(std::vector<Fault> faults) : faults_(std::move(faults)), counts_(faults_.size()) {}

FaultStrike ActiveFaults::Strike(std::string_view entryPoint, double now) {
    FaultStrike strike;
    for (std::size_t i = 0; i < faults_.size(); ++i) {
        Fault const& fault = faults_[i];
        if (fault.entryPoint.empty()) {
            // Forgetting happens once, at its time; being stuck is not a call's.
            if (fault.kind == FaultKind::Forget && fault.when.Includes(now) && counts_[i] == 0) {
                counts_[i] = 1;
                Add(strike, fault);
            }
        } else if (fault.entryPoint == entryPoint) {
            ++counts_[i];
            if (fault.when.Includes(now) && fault.when.call.value_or(counts_[i]) == counts_[i]) {
                Add(strike, fault);
            }
        }
    }
    return strike;
}

bool ActiveFaults::IsStuck(std::size_t quantity, double now) const {
    return std::any_of(faults_.begin(), faults_.end(), [&](Fault const& fault) {
        return fault.kind == FaultKind::Stuck && fault.quantity == quantity && fault.when.Includes(now);
    });
}

}  // namespace gputune::sim
