#include "reasons.h"

#include <algorithm>
#include <string_view>

#include "failure_lines.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::Lines;

// A line with one of these gives a reason.
constexpr std::string_view kReasons[] = {
    "fail",
    "too few",
    "Fail",
    "error: ",
    "null ptr",
    "out of bound",
    " range",
    "not found",
    "no table",
    "not supported",
    "unknown hwid",
    "No available adapter",
    "UNKNOWN",
    "should be in",
    "not match",
    "no level",
    "is same as",
    "are same as",
    "*** NOT IMPLEMENT",
    "bad_alloc",
    "is empty",
    "?????",
    "not a Graphics",
    "numAdapters ... 0",
    "num of thermal controller: 0",
    "current fps",
};

bool GivesReason(std::string const& line) {
    return std::any_of(std::begin(kReasons), std::end(kReasons),
                       [&](std::string_view word) { return line.find(word) != std::string::npos; });
}

// One entry point was missing or failed: a line tells of exactly this one.
std::string MissingLine(Cell const& cell, Lines const& log) {
    auto const texts = test::FailureLines(
        {cell.board->backend, cell.step->name, cell.entryPoint, cell.fault.kind == Kind::Missing, cell.fault.value});
    if (!texts) {
        return "no rule says what the log has to say";
    }
    std::string wanted;
    for (std::string const& text : *texts) {
        auto const hasText = [&](std::string const& line) { return line.find(text) != std::string::npos; };
        if (std::any_of(log.begin(), log.end(), hasText)) {
            return "";
        }
        wanted += (wanted.empty() ? "\"" : " or \"") + text + "\"";
    }
    return wanted.empty() ? "" : "no line of the log has " + wanted;
}

// Failures for which the log has no line.
bool IsSilent(Cell const& cell) {
    bool const isIntelStart = cell.board->backend == Backend::Intel && cell.step->IsInitialisation();
    return cell.fault.kind == Kind::NoMoreMemory                     // a line needs memory
           || cell.entryPoint == "ctlEnumerateDevices"               // there is no device
           || (cell.entryPoint == kMemory && isIntelStart)           // no room for a device's identifier
           || (cell.entryPoint == kEveryEntryPoint && isIntelStart)  // ctlInit fails
           || (cell.entryPoint == kEveryEntryPoint && cell.step->name == "GetFrameRate");  // the frame metrics fail
}

}  // namespace

std::string MissingReason(Cell const& cell, bool worked, Lines const& log, Healthy const& healthy) {
    Kind const kind = cell.fault.kind;
    if (cell.entryPoint != kEveryEntryPoint &&
        (kind == Kind::Missing || kind == Kind::Code || kind == Kind::CodeAndOutputs)) {
        return MissingLine(cell, log);
    }
    if (worked || !healthy.worked || IsSilent(cell)) {
        return "";
    }
    bool const isExplained = std::any_of(log.begin(), log.end(), [&](std::string const& line) {
        return GivesReason(line) && std::find(healthy.log.begin(), healthy.log.end(), line) == healthy.log.end();
    });
    return isExplained ? "" : "it failed, and no line of the log says why";
}

}  // namespace gputune::matrix
