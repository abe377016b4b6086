// A simulated board as its file describes it. Plain data; docs/board-files.md tells the meaning of each entry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "sim/board/AmdBoard.h"
#include "sim/board/IntelBoard.h"
#include "sim/board/NvidiaBoard.h"
#include "sim/model/ModelSettings.h"

namespace gputune::sim {

enum class Vendor {
    None,  // a machine without a vendor library
    Amd,
    Intel,
    Nvidia,
};

enum class FaultKind { Result, Missing, Garbage, Crash, Hang, Forget, Stuck };

// In the order of their names (sim/board/read_faults.cpp).
enum class Garbage {
    None,
    NegativeCount,
    HugeCount,
    NullList,
    ShortList,
    UnterminatedStrings,
    EndlessEnumeration,
    ExtremeValues,
    OneTooMany,
    NullHandles,
    GrowingCount,
    ShrinkingCount,
};

// When a fault is there.
struct FaultTime {
    std::optional<int> call;  // at this call of the entry point only, counted from 1
    double from = 0;          // seconds since the board's start
    double until = std::numeric_limits<double>::infinity();

    bool Includes(double now) const { return now >= from && now < until; }
    bool IsAlways() const { return !call && from <= 0 && until == std::numeric_limits<double>::infinity(); }
};

struct Fault {
    std::string entryPoint{};  // empty: Stuck, or a Forget without a call
    FaultKind kind = FaultKind::Result;
    int result = 0;
    Garbage garbage = Garbage::None;
    double seconds = 0;        // of Hang; 0: for good
    bool othersOnly = false;   // of Forget: the settings of the fans stay
    std::size_t quantity = 0;  // of Stuck, in kStuckQuantities
    FaultTime when{};
};

struct Board {
    std::string description;
    std::uint64_t identity = 0;                        // of the text that describes it: another text has another
    std::vector<std::optional<std::string>> captions;  // without a value: the property is not a string
    Vendor vendor = Vendor::None;
    std::string library;  // base name without extension; empty when the vendor is None
    ModelSettings model;
    std::vector<Fault> faults;

    // What the vendor's library tells; those of other vendors are empty.
    AmdBoard amd;
    IntelBoard intel;
    NvidiaBoard nvidia;
};

}  // namespace gputune::sim
