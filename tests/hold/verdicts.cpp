#include "verdicts.h"

#include <windows.h>

namespace gputune::test {

namespace {

class Clock {
public:
    double Seconds() const { return static_cast<double>(GetTickCount64() - start_) / 1000; }

private:
    ULONGLONG start_ = GetTickCount64();
};

// The supervisor lives: the fan is automatic at once, or a new worker makes it so; and then the hold goes on.
Verdict OfLivingSupervisor(HoldRun& run, bool ending, Clock const& clock) {
    Verdict verdict;
    if (!HoldRun::Eventually([&] { return run.IsAutomatic() || run.AnotherWorkerHolds(); })) {
        return {.problem = "neither automatic control nor a hold"};
    }
    verdict.seconds = clock.Seconds();
    if (ending) {
        if (!run.WaitUntilSupervisorEnded() || !run.IsAutomatic()) {
            verdict.problem = "the hold did not end under automatic control";
        }
        return verdict;
    }
    if (!HoldRun::Eventually([&] { return run.AnotherWorkerHolds() || !run.SupervisorRuns(); })) {
        verdict.problem = "the hold does not go on";
    } else if (!run.SupervisorRuns() && !run.IsAutomatic()) {
        verdict.problem = "the hold ended, and the fan is not under automatic control";
    }
    return verdict;
}

// Nobody was ended: the same worker goes on, and the settings are in force again. Where the board does not tell what
// its fan is set to, a setting that it has lost stays lost: automatic control then.
Verdict OfSameWorker(HoldRun& run, bool boardTells, Clock const& clock) {
    constexpr int kMore = 60;  // calls: some readings
    int const calls = run.Look().calls;
    if (!HoldRun::Eventually([&] { return run.Look().calls > calls || !run.SupervisorRuns(); })) {
        return {.problem = "neither automatic control nor a hold"};
    }
    Verdict verdict{.seconds = clock.Seconds()};
    if (!HoldRun::Eventually([&] {
            BoardView const view = run.Look();
            return (view.calls > calls + kMore && (!view.isAutomatic || !boardTells)) || !run.SupervisorRuns();
        })) {
        verdict.problem = "the hold does not go on";
    } else if (!run.SupervisorRuns() && !run.IsAutomatic()) {
        verdict.problem = "the hold ended, and the fan is not under automatic control";
    }
    return verdict;
}

// Nobody holds any more: the worker makes the fan automatic and ends.
Verdict OfLoneWorker(HoldRun& run, Clock const& clock) {
    if (!HoldRun::Eventually([&] { return !run.WorkerRuns(); })) {
        return {.problem = "the worker goes on without its supervisor"};
    }
    Verdict verdict{.seconds = clock.Seconds()};
    if (!run.IsAutomatic()) {
        verdict.problem = "the worker ended, and the fan is not under automatic control";
    }
    return verdict;
}

}  // namespace

Verdict StrikeAt(HoldRun& run, Cell const& cell) {
    Clock clock;
    switch (cell.strike) {
        case Strike::KillWorker:
            run.KillWorker();
            return OfLivingSupervisor(run, cell.ending, clock);
        case Strike::SuspendWorker:
            run.SuspendWorker();
            run.Continue();
            return OfLivingSupervisor(run, cell.ending, clock);
        case Strike::Hang:
            return OfLivingSupervisor(run, cell.ending, clock);
        case Strike::Crash:
            run.Continue();
            return OfLivingSupervisor(run, cell.ending, clock);
        case Strike::KillSupervisor:
            run.KillSupervisor();
            run.Continue();
            return OfLoneWorker(run, clock);
        case Strike::SuspendSupervisor:
            run.SuspendSupervisor();
            run.Continue();
            return OfLoneWorker(run, clock);
        case Strike::Fail:
        case Strike::Forget:
            run.Continue();
            // Of the fans, only those with a curve of their own tell.
            return OfSameWorker(run, cell.strike == Strike::Fail || cell.board.starts_with("overdrive8"), clock);
        default:
            break;
    }
    run.KillSupervisor();
    run.KillWorker();
    clock = Clock();
    bool const restored = run.Restore();
    Verdict verdict{.seconds = clock.Seconds()};
    if (!restored) {
        verdict.problem = "the next start failed";
    } else if (!run.IsAutomatic()) {
        verdict.problem = "the next start left the fan as it was";
    }
    return verdict;
}

Verdict Disturb(HoldRun& run, Cell const& cell) {
    constexpr unsigned long kStandStill = 6500;  // ms; a hold takes 5 s for a sleep
    constexpr unsigned long kStuck = 240000;     // ms; it takes a minute without a change, and a load that rises
    if (!run.WaitUntilHeld()) {
        return {.problem = "the hold did not begin"};
    }
    Verdict verdict;
    switch (cell.strike) {
        case Strike::Absent:
        case Strike::Implausible:
        case Strike::Stuck:
            if (!HoldRun::Eventually(
                    [&] {
                        BoardView const view = run.Look();
                        verdict.seconds = view.seconds - kFaultBegins;
                        return verdict.seconds > 0 && view.isAutomatic;
                    },
                    kStuck)) {
                verdict.problem = "the fan is not under automatic control";
            }
            break;
        case Strike::Restart:
            if (!HoldRun::Eventually([&] {
                    BoardView const view = run.Look();
                    verdict.seconds = view.seconds - kFaultEnds;
                    return verdict.seconds > 0 && (!view.isAutomatic || !run.SupervisorRuns());
                })) {
                verdict.problem = "the hold does not go on";
            }
            break;
        case Strike::Drop:
            return OfSameWorker(run, true, Clock());
        case Strike::Resume: {
            run.StandStill(kStandStill);
            Clock const clock;
            if (!HoldRun::Eventually([&] { return run.HasSaid("stood still") && run.IsAutomatic(); })) {
                return {.problem = "the fan was not under automatic control after the sleep"};
            }
            verdict.seconds = clock.Seconds();
            if (!run.WaitUntilHeld()) {
                verdict.problem = "the hold does not go on";
            }
            break;
        }
        default: {
            Clock const clock;
            run.Interrupt();
            bool const ended = run.WaitUntilSupervisorEnded();
            verdict.seconds = clock.Seconds();
            if (!ended || !run.IsAutomatic()) {
                verdict.problem = "the hold did not end under automatic control";
            }
            break;
        }
    }
    return verdict;
}

}  // namespace gputune::test
