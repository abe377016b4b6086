#include "totals.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <new>

namespace gputune::matrix {

namespace {

// About as many as there are: when there are suddenly fewer, the code that makes the cells is wrong. The number for
// lack of memory is low, as it becomes smaller whenever the library allocates less.
struct Kind {
    char const* name;
    int fewest;
};
constexpr Kind kAllKinds[kKinds] = {{"OverdriveN", 8500}, {"Overdrive8", 15550},   {"Intel", 4900},
                                    {"NVIDIA", 2500},     {"Lack of memory", 100}, {"Forwarding", 3700}};

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

// Flushed at once: a child would print the content of the buffer again.
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
    for (int kind = 0; kind < kKinds; ++kind) {
        auto const& [name, fewest] = kAllKinds[kind];
        int const cells = g_totals->cells[kind];
        Say(name + (": " + std::to_string(cells)) + " cells\n");
        if (cells < fewest) {
            Say("red: there were " + std::to_string(fewest) + "\n");
            isComplete = false;
        }
        all += cells;
    }
    Say(std::to_string(all) + " cells, " + std::to_string(g_totals->tried) + " tried, " +
        std::to_string(g_totals->red) + " red, " + std::to_string(ProcessorSeconds()) + " s of processor time\n");
    return isComplete;
}

}  // namespace gputune::matrix
