// kill_matrix <gputunectl.exe> <folder of board files> <every n-th cell> <first cell> [board...]
//
// Ends, suspends and disturbs `gputunectl hold` at every step of its life, and looks from outside whether the fan is
// under automatic control or a hold lives afterwards. Prints each red cell and a sum; exits with 1 when a cell is red.
// Runs some cells at a time, in folders of their own below the current one.
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <thread>

#include "HoldRun.h"
#include "kill_cells.h"
#include "verdicts.h"

namespace {

using namespace gputune::test;

constexpr double kPromised = 5;   // seconds
constexpr double kPatience = 30;  // seconds: a loaded machine takes longer than promised
constexpr unsigned kAtOnce = 4;

struct Places {
    std::filesystem::path tool;
    std::filesystem::path boards;
};

Verdict Try(Places const& places, Cell const& cell, std::filesystem::path const& folder) {
    HoldRun run(places.tool, places.boards, folder, cell.board, &cell);
    Verdict verdict;
    if (cell.ending && run.WaitUntilHeld()) {
        run.Interrupt();
    }
    if (!cell.HasStep()) {
        verdict = Disturb(run, cell);
    } else if (run.WaitUntilStep()) {
        verdict = StrikeAt(run, cell);
    } else {
        verdict.problem = "the step was not reached";
    }
    if (verdict.problem.empty() && verdict.seconds > kPatience && cell.strike != Strike::Stuck) {
        verdict.problem = "too late";
    }
    if (!verdict.problem.empty()) {
        verdict.problem += " after " + std::to_string(verdict.seconds) + " s\n" + run.Output();
    }
    return verdict;
}

Reference ReferenceOf(Places const& places, std::string const& board) {
    constexpr std::size_t kBehind = 20;  // calls
    HoldRun run(places.tool, places.boards, std::filesystem::current_path() / ("reference-" + board), board, nullptr);
    Reference reference;
    if (!run.WaitUntilHeld()) {
        std::printf("red: %s cannot be held\n%s\n", board.c_str(), run.Output().c_str());
        return reference;
    }
    std::size_t const held = run.Calls().size();
    HoldRun::Eventually([&] { return run.Calls().size() >= held + kBehind; });
    reference.held = run.Calls();
    run.Interrupt();
    if (!run.WaitUntilSupervisorEnded()) {
        std::printf("red: the hold on %s does not end\n%s\n", board.c_str(), run.Output().c_str());
        return {};
    }
    auto const all = run.Calls();
    reference.ending.assign(all.begin() + static_cast<std::ptrdiff_t>(reference.held.size()), all.end());
    return reference;
}

struct Sum {
    std::mutex lock;
    std::size_t tried = 0;
    std::size_t red = 0;
    std::size_t late = 0;
    double slowest = 0;
    std::string slowestCell;

    void Add(Cell const& cell, Verdict const& verdict) {
        std::lock_guard const guard(lock);
        ++tried;
        // That a reading is stuck is known after a minute only.
        bool const counts = cell.strike != Strike::Stuck;
        late += counts && verdict.seconds > kPromised ? 1 : 0;
        if (counts && verdict.seconds >= slowest) {
            slowest = verdict.seconds;
            slowestCell = cell.Name();
        }
        if (!verdict.problem.empty()) {
            ++red;
            std::printf("red: %s: %s\n", cell.Name().c_str(), verdict.problem.c_str());
            std::fflush(stdout);
        }
    }
};

BOOL WINAPI StayAlive(DWORD) {
    return TRUE;
}

}  // namespace

int main(int count, char** values) {
    if (count < 6) {
        return 2;
    }
    Places const places{.tool = std::filesystem::absolute(values[1]), .boards = std::filesystem::absolute(values[2])};
    std::size_t const step = std::stoul(values[3]);
    std::size_t const first = std::stoul(values[4]);
    // Ctrl+C goes to all processes of a console, this one among them. (To have it ignored would be inherited.)
    SetConsoleCtrlHandler(StayAlive, TRUE);

    std::vector<Cell> cells;
    std::size_t number = 0;
    bool complete = true;
    for (int i = 5; i < count; ++i) {
        auto const all = CellsOf(values[i], ReferenceOf(places, values[i]));
        complete = complete && !all.empty();
        std::copy_if(all.begin(), all.end(), std::back_inserter(cells),
                     [&](Cell const&) { return number++ % step == first; });
    }
    Sum sum;
    std::atomic<std::size_t> next = 0;
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < kAtOnce; ++i) {
        threads.emplace_back([&] {
            for (std::size_t cell = next++; cell < cells.size(); cell = next++) {
                auto const folder = std::filesystem::current_path() / std::to_string(cell);
                sum.Add(cells[cell], Try(places, cells[cell], folder));
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    std::printf("%zu of %zu cells tried, %zu red; slowest %.1f s, %zu above %.0f s: %s\n", sum.tried, number, sum.red,
                sum.slowest, sum.late, kPromised, sum.slowestCell.c_str());
    return complete && sum.red == 0 ? 0 : 1;
}
