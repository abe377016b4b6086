#include "high_memory.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace gputune::test {

namespace {

constexpr std::uintptr_t kHigh = std::uintptr_t{1} << 32;
// The system gives memory out in multiples of this.
constexpr std::uintptr_t kGranularity = 0x10000;

bool IsLow(void const* address) {
    return reinterpret_cast<std::uintptr_t>(address) < kHigh;
}

// Reserves what can be had from `begin` to `end`. Under Wine some of it may be in use by the system below.
void Reserve(std::uintptr_t begin, std::uintptr_t end) {
    if (begin >= end ||
        ::VirtualAlloc(reinterpret_cast<void*>(begin), end - begin, MEM_RESERVE, PAGE_NOACCESS) != nullptr ||
        end - begin <= kGranularity) {
        return;
    }
    std::uintptr_t const middle = begin + (end - begin) / 2 / kGranularity * kGranularity;
    Reserve(begin, middle);
    Reserve(middle, end);
}

void ReserveFreeRegions() {
    MEMORY_BASIC_INFORMATION region;
    for (std::uintptr_t address = kGranularity;
         address < kHigh && ::VirtualQuery(reinterpret_cast<void*>(address), &region, sizeof region) != 0;) {
        std::uintptr_t const begin = reinterpret_cast<std::uintptr_t>(region.BaseAddress);
        std::uintptr_t const end = std::min(begin + region.RegionSize, kHigh);
        if (region.State == MEM_FREE) {
            Reserve((begin + kGranularity - 1) / kGranularity * kGranularity, end / kGranularity * kGranularity);
        }
        address = end;
    }
}

// Takes the low blocks that the heap has left, the large ones first.
void Drain(HANDLE heap) {
    constexpr std::size_t kLargest = 0x80000;
    constexpr std::size_t kStep = 8;
    for (std::size_t size = kLargest; size > 0; size = std::min(size * 3 / 4, size - kStep) / kStep * kStep) {
        while (true) {
            void* const block = ::HeapAlloc(heap, 0, size);
            if (block == nullptr || !IsLow(block)) {
                ::HeapFree(heap, 0, block);
                break;
            }
        }
    }
}

struct Task {
    std::function<int()> const& work;
    void* caller = nullptr;
    int result = 1;

    static void CALLBACK Run(void* task) {
        auto& self = *static_cast<Task*>(task);
        self.result = self.work();
        ::SwitchToFiber(self.caller);
    }
};

}  // namespace

int RunInHighMemory(std::function<int()> const& work) {
    ReserveFreeRegions();
    std::vector<HANDLE> heaps(::GetProcessHeaps(0, nullptr));
    heaps.resize(
        std::min<std::size_t>(heaps.size(), ::GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data())));
    std::for_each(heaps.begin(), heaps.end(), Drain);
    Task task{.work = work};
    task.caller = ::ConvertThreadToFiberEx(nullptr, FIBER_FLAG_FLOAT_SWITCH);
    ::SwitchToFiber(::CreateFiberEx(0, 0, FIBER_FLAG_FLOAT_SWITCH, &Task::Run, &task));
    return task.result;
}

}  // namespace gputune::test
