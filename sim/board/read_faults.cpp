#include <algorithm>
#include <functional>
#include <utility>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr double kMostSeconds = 1e6;

bool Fit(std::span<GarbageFit const> rules, std::string_view entryPoint, Garbage garbage) {
    return std::any_of(rules.begin(), rules.end(), [&](GarbageFit const& fit) {
        return fit.entryPoint == entryPoint && (fit.kinds & Kinds(garbage)) != 0;
    });
}

Garbage ReadGarbage(JsonValue const& value, FaultRules const& rules, std::string const& entryPoint) {
    // In the order of Garbage, whose first one has no name.
    auto const garbage =
        static_cast<Garbage>(1 + value.Choice({"negative-count", "huge-count", "null-list", "short-list",
                                               "unterminated-strings", "endless-enumeration", "extreme-values",
                                               "one-too-many", "null-handles", "growing-count", "shrinking-count"}));
    if (!entryPoint.empty() && !Fit(rules.garbage, entryPoint, garbage)) {
        value.Fail("a kind of garbage that " + entryPoint + " can hand out");
    }
    return garbage;
}

void RequireTrue(JsonValue const& value) {
    if (!value.Bool()) {
        value.Fail("true");
    }
}

// What the fault does, by the one key of those below that it has.
void ReadKind(JsonObject& object, JsonValue const& value, FaultRules const& rules, Fault& fault) {
    struct Kind {
        char const* key;
        FaultKind kind;
        std::function<void(JsonValue const&)> read;
    };
    Kind const kinds[] = {
        {"result", FaultKind::Result,
         [&](JsonValue const& entry) {
             fault.result = entry.Int();
             if (!fault.entryPoint.empty() && !rules.HasResult(fault.entryPoint)) {
                 entry.Fail("no result for " + fault.entryPoint);
             }
         }},
        {"missing", FaultKind::Missing, RequireTrue},
        {"garbage", FaultKind::Garbage,
         [&](JsonValue const& entry) { fault.garbage = ReadGarbage(entry, rules, fault.entryPoint); }},
        {"crash", FaultKind::Crash, RequireTrue},
        {"hang", FaultKind::Hang, [&](JsonValue const& entry) { fault.seconds = entry.Number(0, kMostSeconds); }},
        {"forget", FaultKind::Forget,
         [&](JsonValue const& entry) {
             fault.othersOnly = entry.Choice({"everything", "other-settings"}) == 1;
         }},
        {"stuck", FaultKind::Stuck,
         [&](JsonValue const& entry) {
             // In the order of kStuckQuantities.
             fault.quantity =
                 entry.Choice({"temperature", "hotspot-temperature", "memory-temperature", "load", "fan-rpm"});
         }},
    };
    // Every key is asked for before one is read, so that a mistyped one is the first thing said.
    std::vector<std::pair<Kind const*, JsonValue>> given;
    for (auto const& kind : kinds) {
        if (auto const entry = object.Optional(kind.key)) {
            given.emplace_back(&kind, *entry);
        }
    }
    object.Finish();
    if (given.size() != 1) {
        value.Fail(R"(one of "result", "missing", "garbage", "crash", "hang", "forget" and "stuck")");
    }
    fault.kind = given.front().first->kind;
    given.front().first->read(given.front().second);
}

FaultTime ReadTime(JsonObject& object) {
    FaultTime when;
    auto const call = object.Optional("call");
    object.ReadWith("call", when.call, [](JsonValue const& entry) { return entry.Int(1); });
    object.Read("from", when.from, 0, kMostSeconds);
    object.Read("until", when.until, when.from, kMostSeconds);
    if (call && (object.Optional("from") || object.Optional("until"))) {
        call->Fail(R"(either "call", or "from" and "until")");
    }
    return when;
}

Fault ReadFault(JsonValue const& value, FaultRules const& rules) {
    JsonObject object(value);
    Fault fault;
    auto const entryPoint = object.Optional("entryPoint");
    if (entryPoint) {
        fault.entryPoint = entryPoint->String(255);
        if (!rules.HasEntryPoint(fault.entryPoint)) {
            entryPoint->Fail("the name of an entry point of the vendor's library");
        }
    }
    fault.when = ReadTime(object);
    ReadKind(object, value, rules, fault);
    if (!entryPoint && fault.kind != FaultKind::Forget && fault.kind != FaultKind::Stuck) {
        value.Fail(R"("entryPoint")");
    }
    if (!entryPoint && fault.when.call) {
        value.Fail(R"("entryPoint" beside "call")");
    }
    if (entryPoint && fault.kind == FaultKind::Stuck) {
        entryPoint->Fail(R"(no entry point beside "stuck")");
    }
    if (fault.kind == FaultKind::Missing && !fault.when.IsAlways()) {
        value.Fail("an entry point that is missing all the time");
    }
    return fault;
}

}  // namespace

std::vector<Fault> ReadFaults(JsonObject& object, FaultRules const& rules) {
    std::vector<Fault> faults;
    if (auto const list = object.Optional("faults")) {
        list->ForEach([&](JsonValue const& value) {
            Fault fault = ReadFault(value, rules);
            auto const sameEntry = [&](Fault const& other) {
                return !fault.entryPoint.empty() && other.entryPoint == fault.entryPoint && other.when.IsAlways() &&
                       fault.when.IsAlways();
            };
            if (std::any_of(faults.begin(), faults.end(), sameEntry)) {
                value.Fail("an entry point that has no fault yet");
            }
            faults.push_back(std::move(fault));
        });
    }
    return faults;
}

}  // namespace gputune::sim
