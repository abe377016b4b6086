// Feeds arbitrary text to the reader of the profile file and to the tool's check of such files, and holds one against
// the other: what the check finds nothing wrong with, the reader reads.
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "profile/profile_reader.h"
#include "records/hex_long.h"
#include "require.h"
#include "tool/profile/ProfileCheck.h"

namespace {

using gputune::fuzz::Require;
using gputune::profile::Lookup;
using gputune::profile::Outcome;

bool IsZero(PredefinedPerformanceParameter const& record) {
    return !record.Valid && record.GpuOC == 0 && record.GpuOCGivenValue == 0 && record.MemOC == 0 &&
           record.MemOCGivenValue == 0 && record.PowerOC == 0 && record.GpuSilent == 0 && record.MemSilent == 0 &&
           record.PowerSilent == 0 && record.Watt == 0 && record.NewestVBIOS == 0;
}

void RequireSound(Lookup const& lookup) {
    PredefinedPerformanceParameter const& record = lookup.record;
    switch (lookup.outcome) {
        case Outcome::BoardEntry:
            Require(record.Valid, "a board entry is valid");
            break;
        case Outcome::DefaultEntry:
            Require(record.Valid, "a default entry is valid");
            Require(record.GpuOCGivenValue == 0 && record.MemOCGivenValue == 0 && record.Watt == 0 &&
                        record.NewestVBIOS == 0,
                    "a default entry gives six values only");
            break;
        default:
            Require(IsZero(record), "without an entry the record stays zero");
    }
}

void RequireAgreement(std::string_view text, Outcome outcome, bool threw) {
    std::vector<gputune::tool::Problem> const problems = gputune::tool::CheckProfile(text);
    int line = 1;
    for (gputune::tool::Problem const& problem : problems) {
        Require(problem.line >= line, "problems come in the order of their places");
        Require(!problem.message.empty(), "a problem has a message");
        line = problem.line;
    }
    if (!gputune::tool::HasError(problems)) {
        Require(!threw, "no identifier stops the lookup");
        Require(outcome == Outcome::BoardEntry || outcome == Outcome::DefaultEntry || outcome == Outcome::NoMatch,
                "the file is read");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(data, data + size);
    Outcome outcome = Outcome::Unreadable;
    bool threw = false;
    // A board of the corpus, the identifier of "-1", and one that no short text holds by chance, so that the whole file
    // is walked.
    for (std::uint32_t const hwid : {0x1FU, 0xFFFFFFFFU, 0x5EADC0DEU}) {
        try {
            Lookup const lookup = gputune::profile::FindProfile(text, hwid);
            outcome = lookup.outcome;
            RequireSound(lookup);
        } catch (gputune::HexLongError const&) {
            threw = true;
        }
    }
    RequireAgreement(text, outcome, threw);
    return 0;
}
