// The cost of a forwarded control library function, between its floor, the direct call, and a call that looks up the
// entry point every time.
#include <benchmark/benchmark.h>

#include "BenchMachine.h"
#include "intel/ctl_records.h"

namespace gputune::bench {
namespace {

constexpr char kFunction[] = "ctlOverclockGpuFrequencyOffsetSet";
using Function = intel::ctl_result_t(CTL_CDECL*)(intel::ctl_device_adapter_handle_t, double);
constexpr double kOffset = 50;

BenchMachine& Machine() {
    static BenchMachine machine(GPUTUNE_LOG_NONE, BenchMachine::kIntel);
    return machine;
}

void FloorDirectCall(benchmark::State& state) {
    auto const direct = Machine().VendorFunction<Function>(kFunction);
    for (auto _ : state) {
        benchmark::DoNotOptimize(direct(nullptr, kOffset));
    }
}
BENCHMARK(FloorDirectCall);

void ForwardedCall(benchmark::State& state) {
    auto const forwarded = Machine().Export<Function>(kFunction);
    for (auto _ : state) {
        benchmark::DoNotOptimize(forwarded(nullptr, kOffset));
    }
}
BENCHMARK(ForwardedCall);

void LookUpAtEachCall(benchmark::State& state) {
    BenchMachine& machine = Machine();
    for (auto _ : state) {
        benchmark::DoNotOptimize(machine.VendorFunction<Function>(kFunction)(nullptr, kOffset));
    }
}
BENCHMARK(LookUpAtEachCall);

}  // namespace
}  // namespace gputune::bench

BENCHMARK_MAIN();
