// What can be wrong with a vendor's library: for board files, and for the orders that a running board takes.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "sim/board/Board.h"

namespace gputune::sim {

// What an entry point can hand out instead of the truth.
struct GarbageFit {
    std::string_view entryPoint;
    Garbage garbage;
};

struct FaultRules {
    std::span<std::string_view const> entryPoints;
    std::span<std::string_view const> withoutResult;  // of these, those whose result is none to choose
    std::span<GarbageFit const> garbage;

    bool HasEntryPoint(std::string_view name) const { return Contains(entryPoints, name); }
    bool HasResult(std::string_view name) const { return HasEntryPoint(name) && !Contains(withoutResult, name); }

private:
    static bool Contains(std::span<std::string_view const> names, std::string_view name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    }
};

FaultRules AmdFaultRules();
FaultRules IntelFaultRules();
FaultRules NvidiaFaultRules();

}  // namespace gputune::sim
