#include "sim/standin/StandIn.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
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
    SharedPart shared{.faults = ActiveFaults(board.faults)};
    std::uint64_t const identity = board.identity;
    ToAnsi(board);
    auto driver = NewDriver(std::move(board));
    if (!HideExports(hidden)) {
        throw std::runtime_error("the stand-in library cannot hide the entry points that the board says are missing");
    }
    driver_ = std::move(driver);
    shared_ = std::move(shared);
    hidden_ = std::move(hidden);
    results_.clear();
    calls_.Clear();
    allocations_ = 0;
    identity_ = identity;
    state_.reset();
}

void StandIn::KeepState(std::string const& path) {
    std::lock_guard const guard(lock_);
    if (driver_ == nullptr) {
        throw StateError("there is no board whose state could be kept");
    }
    TimeSource const own = shared_.time;
    shared_.time.Share();
    try {
        state_ = std::make_unique<StateFile>(path, identity_, SavedState());
    } catch (StateError const&) {
        shared_.time = own;
        throw;
    }
}

StateBytes StandIn::SavedState() {
    StateWriter writer;
    writer(shared_);
    driver_->Save(writer);
    return writer.Result();
}

void StandIn::RestoreState(StateBytes const& bytes) {
    StateReader reader(bytes);
    reader(shared_);
    driver_->Restore(reader);
}

bool StandIn::OnBoard(std::function<void()> const& operation) {
    if (state_ == nullptr) {
        operation();
        return true;
    }
    try {
        state_->Change([&](StateBytes const& present) {
            RestoreState(present);
            operation();
            return SavedState();
        });
        return true;
    } catch (StateError const&) {
        return false;
    }
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
    OnBoard([&] { shared_.time.Advance(std::max(milliseconds, 0)); });
}

FaultStrike StandIn::Meet(char const* entryPoint) {
    FaultStrike strike;
    OnBoard([&] {
        ++shared_.calls;
        double const now = Now();
        strike = shared_.faults.Strike(entryPoint, now);
        if (driver_ == nullptr) {
            return;
        }
        if (strike.forgets) {
            driver_->Forget(true);
        }
        for (std::size_t quantity = 0; quantity < std::size(kStuckQuantities); ++quantity) {
            driver_->SetStuck(quantity, shared_.faults.IsStuck(quantity, now), now);
        }
    });
    // The state is free meanwhile: other processes go on.
    pause_.BeforeCall(entryPoint);
    if (strike.crash) {
        // Without a dialog, for which the process would wait.
        ::SetErrorMode(SEM_NOGPFAULTERRORBOX);
        ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    }
    if (strike.hang) {
        constexpr double kMilliseconds = 1000;
        ::Sleep(*strike.hang == 0 ? INFINITE : static_cast<DWORD>(*strike.hang * kMilliseconds));
    }
    if (auto const order = results_.find(entryPoint); order != results_.end()) {
        strike.result = order->second;
    }
    return strike;
}

}  // namespace gputune::sim
