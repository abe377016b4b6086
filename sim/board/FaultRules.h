// The faults that a vendor's library can have. They limit what a board file can ask for, and what can be ordered of a
// running board.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "sim/board/Board.h"

namespace gputune::sim {

// A bit for each kind of garbage.
template <class... Kind>
constexpr unsigned Kinds(Kind... kinds) {
    return ((1U << static_cast<unsigned>(kinds)) | ...);
}

// The kinds of garbage that an entry point can hand out.
struct GarbageFit {
    std::string_view entryPoint;
    unsigned kinds;
};

struct FaultRules {
    std::span<std::string_view const> entryPoints;
    std::span<std::string_view const> withoutResult;  // those of them that return no result code
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
