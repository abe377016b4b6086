#include "kill_cells.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace gputune::test {

namespace {

constexpr Strike kStrikes[] = {Strike::KillWorker, Strike::KillSupervisor, Strike::KillBoth,
                               Strike::Hang,       Strike::SuspendWorker,  Strike::SuspendSupervisor,
                               Strike::Crash,      Strike::Fail,           Strike::Forget};
constexpr std::size_t kKills = 3;      // the first of them
constexpr std::size_t kAtAnyTime = 4;  // those that leave a hold that has not begun to go on
constexpr std::size_t kBehind = 16;    // steps behind the last write: more than a reading has

std::vector<Step> StepsOf(std::vector<std::string> const& calls, std::map<std::string, int>& counts) {
    std::vector<Step> steps;
    for (std::string const& entryPoint : calls) {
        steps.push_back({.entryPoint = entryPoint, .call = ++counts[entryPoint]});
    }
    return steps;
}

}  // namespace

bool Step::IsWrite() const {
    return entryPoint.ends_with("_Set") ||
           (entryPoint.starts_with("ctl") && entryPoint.find("Set") != std::string::npos);
}

char const* StrikeName(Strike strike) {
    switch (strike) {
        case Strike::KillWorker:
            return "worker killed";
        case Strike::KillSupervisor:
            return "supervisor killed";
        case Strike::KillBoth:
            return "both killed, next start";
        case Strike::SuspendWorker:
            return "worker suspended";
        case Strike::SuspendSupervisor:
            return "supervisor suspended";
        case Strike::Hang:
            return "call hangs";
        case Strike::Crash:
            return "call crashes";
        case Strike::Fail:
            return "call fails";
        case Strike::Forget:
            return "settings lost";
        case Strike::Absent:
            return "temperature absent";
        case Strike::Implausible:
            return "temperature implausible";
        case Strike::Restart:
            return "driver restarts";
        case Strike::Stuck:
            return "temperature stuck";
        case Strike::Drop:
            return "other settings dropped";
        case Strike::Resume:
            return "sleep and resume";
        case Strike::Interrupt:
            return "Ctrl+C";
    }
    return "";
}

std::string Cell::Name() const {
    if (!HasStep()) {
        return board + ": " + StrikeName(strike);
    }
    return board + (ending ? ", ending, " : ", ") + (before ? "before " : "after ") + step.entryPoint + " " +
           std::to_string(step.call) + ": " + StrikeName(strike);
}

std::vector<Cell> CellsOf(std::string const& board, Reference const& reference) {
    std::map<std::string, int> counts;
    std::vector<Step> steps = StepsOf(reference.held, counts);
    std::vector<Step> const ending = StepsOf(reference.ending, counts);
    auto const isWrite = [](Step const& step) { return step.IsWrite(); };
    auto const first = std::find_if(steps.begin(), steps.end(), isWrite);
    auto const last = std::find_if(steps.rbegin(), steps.rend(), isWrite).base();
    auto const end = last + std::min<std::ptrdiff_t>(steps.end() - last, kBehind);

    std::vector<Cell> cells;
    if (first == steps.end()) {
        return cells;
    }
    std::size_t turn = 0;
    for (auto step = steps.begin(); step != end; ++step) {
        if (step->IsWrite()) {
            for (Strike const strike : kStrikes) {
                cells.push_back({.board = board, .step = *step, .before = true, .strike = strike});
                // Faults come before the call's effect.
                if (strike < Strike::Crash) {
                    cells.push_back({.board = board, .step = *step, .before = false, .strike = strike});
                }
            }
        } else if (step < first) {
            cells.push_back({.board = board, .step = *step, .strike = kStrikes[turn++ % kAtAnyTime]});
        } else {
            std::size_t const others = std::size(kStrikes) - kKills;
            cells.push_back({.board = board, .step = *step, .strike = kStrikes[turn % kKills]});
            cells.push_back({.board = board, .step = *step, .strike = kStrikes[kKills + turn++ % others]});
        }
    }
    for (Step const& step : ending) {
        for (std::size_t i = 0; i < kKills && step.IsWrite(); ++i) {
            for (bool const before : {true, false}) {
                cells.push_back(
                    {.board = board, .step = step, .before = before, .strike = kStrikes[i], .ending = true});
            }
        }
    }
    // Where the temperature comes from.
    char const* const sensors[] = {"ADL2_OverdriveN_Temperature_Get", "ADL2_New_QueryPMLogData_Get",
                                   "ctlPowerTelemetryGet"};
    std::string const sensor = *std::find_if(std::begin(sensors), std::end(sensors), [&](char const* name) {
        return std::find(reference.held.begin(), reference.held.end(), name) != reference.held.end();
    });
    for (Strike const strike : {Strike::Absent, Strike::Implausible, Strike::Restart, Strike::Stuck, Strike::Drop,
                                Strike::Resume, Strike::Interrupt}) {
        // Intel's load is a counter, in which no rise shows.
        if (strike == Strike::Stuck && sensor.starts_with("ctl")) {
            continue;
        }
        Cell cell{.board = board, .step = {.entryPoint = sensor}, .strike = strike};
        if (strike == Strike::Drop) {
            cell.step = *std::prev(last);
        }
        for (auto const& [entryPoint, calls] : counts) {
            cell.entryPoints.push_back(entryPoint);
        }
        cells.push_back(cell);
    }
    return cells;
}

}  // namespace gputune::test
