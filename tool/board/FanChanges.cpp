#include "tool/board/FanChanges.h"

#include <algorithm>
#include <iterator>

#include "tool/board/Checks.h"
#include "tool/board/FanAnswers.h"
#include "tool/values/Errors.h"
#include "tool/values/FanCurve.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// What the fans answered. Throws UnsupportedError when nothing was sent to any fan.
ReadBack ReadBackOf(FanAnswers const& answers) {
    std::size_t const unsent =
        answers.Count(FanAnswer::Kind::UnknownMode) + answers.Count(FanAnswer::Kind::NothingSent);
    if (!answers.fans.empty() && unsent == answers.fans.size()) {
        throw UnsupportedError("nothing was sent. " + Joined(answers.Problems(), " "));
    }
    ReadBack readBack;
    for (std::string const& problem : answers.Problems()) {
        readBack.AddProblem(problem);
    }
    readBack.AddUnreported("fan");
    return readBack;
}

// Compares the points of the board's curve with those that `asked` returns for each. A board without a curve has none.
template <class Asked>
ReadBack ComparePoints(Session const& session, Asked&& asked) {
    ReadBack readBack;
    FanSetting const setting = session.Api().ReadFanSetting();
    auto const compare = [&readBack](int point, char const* what, int wanted, int shown, Unit unit) {
        if (wanted != kUntouched) {
            readBack.Compare(what + (" of " + FanPointName(static_cast<std::size_t>(point))), wanted,
                             shown == kUntouched ? std::nullopt : std::optional<double>(shown), unit);
        }
    };
    for (int i = 0; setting.Valid && i < CountPoints(setting); ++i) {
        FanPoint const& point = setting.Points[i];
        FanTablePoint const wanted = asked(i, point);
        compare(i, "speed", wanted.FanSpeed, point.CurrentSpeed, Unit::Percent);
        compare(i, "temperature", wanted.FanTemperature, point.CurrentTemperature, Unit::Celsius);
    }
    return readBack;
}

// Whether the fan took a change that was sent when the log had `mark` entries.
template <class Asked>
ReadBack ReadBackFan(Session const& session, std::size_t mark, Asked&& asked) {
    return session.ApiType() == GPUTUNE_API_IGCL ? ReadBackOf(ReadFanAnswers(session.LogSince(mark)))
                                                 : ComparePoints(session, asked);
}

template <class Asked>
SentChange SendSpeed(Session const& session, int speed, Asked&& asked) {
    std::size_t const mark = session.LogMark();
    if (!session.Api().SetFanSpeed(speed)) {
        return {};
    }
    return {true, ReadBackFan(session, mark, asked)};
}

}  // namespace

SentChange SendFanSpeed(Session const& session, int percent) {
    return SendSpeed(session, percent, [percent](int, FanPoint const&) {
        return FanTablePoint{.FanSpeed = percent, .FanTemperature = kUntouched};
    });
}

SentChange SendAutomaticFan(Session const& session) {
    return SendSpeed(session, -1, [](int, FanPoint const& point) {
        // A range of 0 to 0 means that the board does not have this setting.
        bool const hasSpeed = point.MinSpeed != 0 || point.MaxSpeed != 0;
        bool const hasTemperature = point.MinTemperature != 0 || point.MaxTemperature != 0;
        return FanTablePoint{.FanSpeed = hasSpeed ? point.DefaultSpeed : kUntouched,
                             .FanTemperature = hasTemperature ? point.DefaultTemperature : kUntouched};
    });
}

SentChange SendFanCurve(Session const& session, std::vector<FanTablePoint> const& curve) {
    std::size_t const mark = session.LogMark();
    SentChange change{.done = session.Api().SetFanSpeedTable(curve.data(), static_cast<int>(curve.size()))};
    if (session.ApiType() == GPUTUNE_API_IGCL) {
        FanAnswers const answers = ReadFanAnswers(session.LogSince(mark));
        if (answers.expectedPoints) {
            throw WrongPointCount(*answers.expectedPoints, curve.size());
        }
        // Whoever sent it says which fan refused it.
        change.done = change.done || !ReadBackOf(answers).IsDone();
    }
    if (change.done) {
        change.readBack = ReadBackFan(session, mark, [&curve](int i, FanPoint const&) {
            return curve[std::min(static_cast<std::size_t>(i), curve.size() - 1)];
        });
    }
    return change;
}

int CountPoints(FanSetting const& setting) {
    return std::clamp(setting.PointCount, 0, static_cast<int>(std::size(setting.Points)));
}

}  // namespace gputune::tool
