#include "tool/board/FanAnswers.h"

#include <algorithm>

namespace gputune::tool {

namespace {

bool IsSetting(std::string const& tag) {
    return tag.ends_with(" ctlFanSetFixedSpeedMode") || tag.ends_with(" ctlFanSetSpeedTableMode") ||
           tag.ends_with(" ctlFanSetDefaultMode") || tag.ends_with(" ctlFanGetProperties");
}

bool IsAcceptance(LogEntry const& entry) {
    return (IsSetting(entry.tag) && entry.message.starts_with("set to ")) ||
           (entry.tag.ends_with(" fan table") && entry.message == "set") || entry.message == "set to default";
}

}  // namespace

std::size_t FanAnswers::Count(FanAnswer::Kind kind) const {
    return static_cast<std::size_t>(
        std::count_if(fans.begin(), fans.end(), [kind](FanAnswer const& fan) { return fan.kind == kind; }));
}

std::vector<std::string> FanAnswers::Problems() const {
    std::vector<std::string> problems;
    for (std::size_t i = 0; i < fans.size(); ++i) {
        std::string const name = "Fan " + std::to_string(i + 1);
        switch (fans[i].kind) {
            case FanAnswer::Kind::Accepted:
                break;
            case FanAnswer::Kind::Refused:
                problems.push_back(name + " refused it: " + fans[i].why + ".");
                break;
            case FanAnswer::Kind::NothingSent:
                problems.push_back(name + " takes no curve.");
                break;
            case FanAnswer::Kind::UnknownMode:
                problems.push_back(name + " takes neither fixed speeds nor curves in a way that is known.");
                break;
        }
    }
    return problems;
}

FanAnswers ReadFanAnswers(LogEntries const& entries) {
    constexpr std::string_view kFailure = "error: ";
    FanAnswers answers{.fans = {}};
    for (LogEntry const& entry : entries) {
        if (entry.message.starts_with("For fan handle ")) {
            answers.fans.emplace_back();
        }
        if (answers.fans.empty()) {
            continue;
        }
        FanAnswer& fan = answers.fans.back();
        if (IsAcceptance(entry)) {
            fan.kind = FanAnswer::Kind::Accepted;
        } else if (IsSetting(entry.tag) && entry.message.starts_with(kFailure)) {
            fan = {FanAnswer::Kind::Refused, entry.message.substr(kFailure.size())};
        } else if (entry.line.ends_with(" ?????")) {
            fan.kind = FanAnswer::Kind::UnknownMode;
        } else if (entry.tag.ends_with(" nCount not match")) {
            answers.expectedPoints = NumberBehind(entry.message, "max ponint: ");
        }
    }
    return answers;
}

}  // namespace gputune::tool
