#include "sim/standin/StandIn.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "sim/standin/ExportTable.h"
#include "sim/standin/ansi_texts.h"

namespace gputune::sim {

void StandIn::Load(Board board) {
    std::lock_guard const guard(lock_);
    if (board.vendor != vendor_) {
        throw std::runtime_error("the board is not one of this library's vendor");
    }
    std::set<std::string> hidden = AbsentWith(board);
    for (auto const& fault : board.faults) {
        if (fault.kind == FaultKind::Missing) {
            hidden.insert(fault.entryPoint);
        }
    }
    std::vector<Fault> faults = board.faults;
    ToAnsi(board);
    auto driver = NewDriver(std::move(board));
    if (!HideExports(hidden)) {
        throw std::runtime_error("the stand-in library cannot hide the entry points that the board says are missing");
    }
    driver_ = std::move(driver);
    faults_ = std::move(faults);
    hidden_ = std::move(hidden);
    results_.clear();
    calls_.Clear();
    time_ = TimeSource();
    allocations_ = 0;
}

bool StandIn::SetResult(std::string const& entryPoint, int result) {
    std::lock_guard const guard(lock_);
    if (!rules_.HasResult(entryPoint)) {
        return false;
    }
    results_[entryPoint] = result;
    return true;
}

void StandIn::ClearFaults() {
    std::lock_guard const guard(lock_);
    results_.clear();
}

bool StandIn::Hide(std::string const& entryPoint) {
    std::lock_guard const guard(lock_);
    if (!rules_.HasEntryPoint(entryPoint)) {
        return false;
    }
    hidden_.insert(entryPoint);
    return HideExports(hidden_);
}

void StandIn::Advance(int milliseconds) {
    std::lock_guard const guard(lock_);
    time_.Advance(std::max(milliseconds, 0));
}

Garbage StandIn::GarbageOf(char const* entryPoint) const {
    Fault const* const fault = FindFault(entryPoint);
    return fault != nullptr ? fault->garbage : Garbage::None;
}

std::optional<int> StandIn::Demanded(char const* entryPoint) const {
    if (auto const order = results_.find(entryPoint); order != results_.end()) {
        return order->second;
    }
    Fault const* const fault = FindFault(entryPoint);
    return fault != nullptr && fault->kind == FaultKind::Result ? std::optional(fault->result) : std::nullopt;
}

Fault const* StandIn::FindFault(char const* entryPoint) const {
    auto const found = std::find_if(faults_.begin(), faults_.end(),
                                    [&](Fault const& fault) { return fault.entryPoint == entryPoint; });
    return found == faults_.end() ? nullptr : &*found;
}

}  // namespace gputune::sim
