#include "totals.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <new>

#include "matrix_boards.h"

namespace gputune::matrix {

namespace {

// About as many as there were when this was written: a matrix that shrinks is a mistake in what makes it.
constexpr int kFewestCells[4] = {8500, 15550, 4900, 2500};
constexpr int kFewestForwardingCells = 3700;
// There are the fewer of these, the fewer allocations the library makes.
constexpr int kFewestMemoryCells = 100;

Totals* g_totals = nullptr;
std::FILE* g_report = nullptr;

double ProcessorSeconds() {
    double seconds = 0;
    for (int const who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        for (timeval const& time : {usage.ru_utime, usage.ru_stime}) {
            seconds += static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        }
    }
    return seconds;
}

}  // namespace

void ShareTotals() {
    g_report = ::fdopen(::dup(STDOUT_FILENO), "w");
    g_totals =
        new (::mmap(nullptr, sizeof(Totals), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Totals{};
}

Totals& SharedTotals() {
    return *g_totals;
}

// At once: what stands in a buffer would be a child's as well.
void Say(std::string const& text) {
    std::fwrite(text.data(), 1, text.size(), g_report);
    std::fflush(g_report);
}

void Report(std::string const& name, std::string const& what) {
    ++g_totals->red;
    Say("red: " + name + "\n" + what + "\n");
}

bool PrintTotals() {
    bool isComplete = true;
    int all = 0;
    auto const print = [&](std::string const& name, int cells, int fewest) {
        Say(name + ": " + std::to_string(cells) + " cells\n");
        if (cells < fewest) {
            Say("red: there were " + std::to_string(fewest) + "\n");
            isComplete = false;
        }
        all += cells;
    };
    for (Backend const backend : {Backend::OverdriveN, Backend::Overdrive8, Backend::Intel, Backend::Nvidia}) {
        auto const position = static_cast<std::size_t>(backend);
        print(NameOf(backend), g_totals->cells[position], kFewestCells[position]);
    }
    print("Lack of memory", g_totals->memoryCells, kFewestMemoryCells);
    print("Forwarding", g_totals->forwardingCells, kFewestForwardingCells);
    Say(std::to_string(all) + " cells, " + std::to_string(g_totals->tried) + " tried, " +
        std::to_string(g_totals->red) + " red, " + std::to_string(ProcessorSeconds()) + " s of processor time\n");
    return isComplete;
}

}  // namespace gputune::matrix
