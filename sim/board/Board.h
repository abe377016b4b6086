// A simulated board as its file describes it. Plain data; docs/board-files.md tells the meaning of each entry.
#pragma once

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

enum class FaultKind { Result, Missing, Garbage };

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

struct Fault {
    std::string entryPoint;
    FaultKind kind = FaultKind::Result;
    int result = 0;
    Garbage garbage = Garbage::None;
};

struct Board {
    std::string description;
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
