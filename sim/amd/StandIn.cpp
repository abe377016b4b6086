#include "amd/StandIn.h"

#include <algorithm>
#include <stdexcept>

#include "amd/ExportTable.h"

namespace gputune::sim {

namespace {

std::set<std::string> HiddenBy(Board const& board) {
    std::set<std::string> hidden;
    for (auto const& fault : board.faults) {
        if (fault.kind == FaultKind::Missing) {
            hidden.insert(fault.entryPoint);
        }
    }
    if (board.overdrive8 && !board.overdrive8->newerEntryPoints) {
        hidden.insert({"ADL2_Overdrive8_Init_SettingX2_Get", "ADL2_Overdrive8_Current_SettingX2_Get"});
    }
    if (board.overdrive8 && !board.overdrive8->olderEntryPoints) {
        hidden.insert({"ADL2_Overdrive8_Init_Setting_Get", "ADL2_Overdrive8_Current_Setting_Get"});
    }
    return hidden;
}

}  // namespace

StandIn& StandIn::Instance() {
    static StandIn standIn;
    return standIn;
}

void StandIn::Load(Board board) {
    std::lock_guard const guard(lock_);
    auto driver = std::make_unique<Driver>(std::move(board));
    auto hidden = HiddenBy(driver->Description());
    if (!HideExports(hidden)) {
        throw std::runtime_error("the stand-in library cannot hide the entry points that the board says are missing");
    }
    driver_ = std::move(driver);
    hidden_ = std::move(hidden);
    results_.clear();
    calls_.Clear();
    time_ = TimeSource();
    allocations_ = 0;
}

void StandIn::SetResult(std::string const& entryPoint, int result) {
    std::lock_guard const guard(lock_);
    results_[entryPoint] = result;
}

void StandIn::ClearFaults() {
    std::lock_guard const guard(lock_);
    results_.clear();
}

bool StandIn::Hide(std::string const& entryPoint) {
    std::lock_guard const guard(lock_);
    if (!HasExport(entryPoint)) {
        return false;
    }
    hidden_.insert(entryPoint);
    return HideExports(hidden_);
}

void StandIn::Advance(int milliseconds) {
    std::lock_guard const guard(lock_);
    time_.Advance(std::max(milliseconds, 0));
}

amd::AdlContext StandIn::CreateContext(amd::AdlMemoryAllocator allocator) {
    allocator_ = allocator;
    return this;
}

void* StandIn::Allocate(std::size_t bytes) {
    if (!allocator_) {
        return nullptr;
    }
    ++allocations_;
    return allocator_(static_cast<int>(bytes));
}

Fault const* StandIn::FindFault(char const* entryPoint) const {
    auto const& faults = driver_->Description().faults;
    auto const found =
        std::find_if(faults.begin(), faults.end(), [&](Fault const& fault) { return fault.entryPoint == entryPoint; });
    return found == faults.end() ? nullptr : &*found;
}

}  // namespace gputune::sim
