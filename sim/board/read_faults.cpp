#include <algorithm>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

bool Fit(std::span<GarbageFit const> rules, std::string_view entryPoint, Garbage garbage) {
    return std::any_of(rules.begin(), rules.end(), [&](GarbageFit const& fit) {
        return fit.entryPoint == entryPoint && (fit.kinds & Kinds(garbage)) != 0;
    });
}

Fault ReadFault(JsonValue const& value, FaultRules const& rules) {
    JsonObject object(value);
    Fault fault;
    JsonValue const entryPoint = object.Required("entryPoint");
    fault.entryPoint = entryPoint.String(255);
    if (!rules.HasEntryPoint(fault.entryPoint)) {
        entryPoint.Fail("the name of an entry point of the vendor's library");
    }
    auto const result = object.Optional("result");
    auto const missing = object.Optional("missing");
    auto const garbage = object.Optional("garbage");
    object.Finish();
    if (result.has_value() + missing.has_value() + garbage.has_value() != 1) {
        value.Fail(R"(one of "result", "missing" and "garbage" beside "entryPoint")");
    }
    if (result) {
        fault.kind = FaultKind::Result;
        fault.result = result->Int();
        if (!rules.HasResult(fault.entryPoint)) {
            result->Fail("no result for " + fault.entryPoint);
        }
    } else if (missing) {
        fault.kind = FaultKind::Missing;
        if (!missing->Bool()) {
            missing->Fail("true");
        }
    } else {
        fault.kind = FaultKind::Garbage;
        // In the order of Garbage, whose first one has no name.
        fault.garbage = static_cast<Garbage>(
            1 + garbage->Choice({"negative-count", "huge-count", "null-list", "short-list", "unterminated-strings",
                                 "endless-enumeration", "extreme-values", "one-too-many", "null-handles",
                                 "growing-count", "shrinking-count"}));
        if (!Fit(rules.garbage, fault.entryPoint, fault.garbage)) {
            garbage->Fail("a kind of garbage that " + fault.entryPoint + " can hand out");
        }
    }
    return fault;
}

}  // namespace

std::vector<Fault> ReadFaults(JsonObject& object, FaultRules const& rules) {
    std::vector<Fault> faults;
    if (auto const list = object.Optional("faults")) {
        list->ForEach([&](JsonValue const& value) {
            Fault fault = ReadFault(value, rules);
            auto const sameEntry = [&](Fault const& other) { return other.entryPoint == fault.entryPoint; };
            if (std::any_of(faults.begin(), faults.end(), sameEntry)) {
                value.Fail("an entry point that has no fault yet");
            }
            faults.push_back(std::move(fault));
        });
    }
    return faults;
}

}  // namespace gputune::sim
