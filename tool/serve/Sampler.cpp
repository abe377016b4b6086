#include "tool/serve/Sampler.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "tool/values/Quoted.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// In seconds.
constexpr double kLongestStandstill = 5;  // between two looks at the clock; after more, the machine slept
constexpr double kLongestRest = 1;        // so that a standstill shows
constexpr double kShortestAge = 5;        // for which a sample is served, however short the interval

// Samples in a row without any reading; a new worker loads the vendor's library anew.
constexpr int kMostUnread = 5;

// A driver can answer with as many codes as it likes; the exporter keeps so many pairs of function and code apart.
constexpr std::size_t kMostPairs = 64;
constexpr char const* kOther = "other";
constexpr std::size_t kLongestName = 64;
constexpr std::size_t kLongestCode = 40;

double LongestAge(double interval) {
    return std::max(3 * interval, kShortestAge);
}

std::string ShortText(std::string_view text, std::size_t length) {
    return std::string(Cut(Printable(text), length));
}

// What follows the log's "failed: " or "error: ": of a number with its name only the number.
std::string FailureCode(std::string_view answer) {
    for (std::string_view const begin : {"failed: ", "error: "}) {
        if (answer.starts_with(begin)) {
            answer.remove_prefix(begin.size());
        }
    }
    long long number = 0;
    auto const [end, error] = std::from_chars(answer.data(), answer.data() + answer.size(), number);
    std::string_view const rest = answer.substr(static_cast<std::size_t>(end - answer.data()));
    return error == std::errc{} && rest.starts_with(" (") ? std::to_string(number) : ShortText(answer, kLongestCode);
}

// Of the words of a message.
std::string Sentence(std::string text) {
    if (!text.empty() && text.front() >= 'a' && text.front() <= 'z') {
        text.front() = static_cast<char>(text.front() - 'a' + 'A');
    }
    return text.ends_with('.') ? text : text + ".";
}

}  // namespace

Sampler::Sampler(double interval, SamplerPort& port, Moment const& start)
    : interval_(interval),
      port_(port),
      link_(port),
      activity_(LongestAge(interval)),
      nextSample_(start.steady),
      lastTime_(start.steady) {
    snapshot_.longestAge = LongestAge(interval);
    snapshot_.startTime = start.wall;
    LoseSample("No sample was taken yet.", "starting");
}

void Sampler::OnLine(std::string const& line, Moment const& now) {
    Handle(link_.OnLine(line, now.steady), now);
}

void Sampler::OnGone(Moment const& now) {
    Handle(link_.OnGone(now.steady), now);
}

void Sampler::OnTime(Moment const& now) {
    if (now.steady - lastTime_ > kLongestStandstill) {
        link_.Excuse(now.steady);
        activity_.Reset();
    }
    lastTime_ = now.steady;
    if (now.steady >= DueTime()) {
        if (!HasPower()) {
            nextSample_ = std::min(nextSample_, now.steady);
            PlanNextSample(now);
        } else if (link_.IsReady()) {
            PlanNextSample(now);
            sentAt_ = now.fine;
            link_.Send({.order = Order::Sample}, now.steady);
        }
    }
    if (!MayNotStart()) {
        Handle(link_.OnTime(now.steady), now);
    }
    DropStaleSample(snapshot_, now);
}

double Sampler::NextTime() const {
    double const next = std::min(lastTime_ + kLongestRest, DueTime());
    return MayNotStart() ? next : std::min(next, link_.NextTime());
}

// When the board is to be opened or read next.
double Sampler::DueTime() const {
    if (link_.IsStopped()) {
        return snapshot_.isPoweredOff ? std::max(nextSample_, link_.NextTime()) : link_.NextTime();
    }
    return link_.IsReady() ? nextSample_ : std::numeric_limits<double>::infinity();
}

// A worker that has opened the board stays while the board has no power: it asks the board nothing by itself. One that
// ends is not replaced.
bool Sampler::MayNotStart() const {
    return link_.IsStopped() && snapshot_.isPoweredOff;
}

// From a time that has come to the next one; samples that were missed are not made up for.
void Sampler::PlanNextSample(Moment const& now) {
    nextSample_ += interval_ * (std::floor((now.steady - nextSample_) / interval_) + 1);
}

bool Sampler::HasPower() {
    std::optional<bool> const hasPower = port_.IsPowered(snapshot_.board ? snapshot_.board->vendor : 0);
    bool const isOff = hasPower == false;
    if (hasPower.has_value() != snapshot_.powerIsKnown) {
        snapshot_.powerIsKnown = hasPower.has_value();
        ++snapshot_.revision;
    }
    if (isOff != snapshot_.isPoweredOff) {
        snapshot_.isPoweredOff = isOff;
        activity_.Reset();
        LoseSample(isOff ? "The board's device has no power, so it is not asked." : "No sample was taken yet.",
                   isOff ? "not_powered" : "starting");
    }
    return !isOff;
}

void Sampler::Handle(WorkerLink::Event const& event, Moment const& now) {
    switch (event.kind) {
        case WorkerLink::Event::Kind::Nothing:
            return;
        case WorkerLink::Event::Kind::Lost:
            OnLost(Sentence(event.why), "lost");
            return;
        case WorkerLink::Event::Kind::Answered:
            break;
    }
    if (event.answer->order == Order::Open) {
        OnOpened(*event.answer, now);
    } else if (event.answer->order == Order::Sample) {
        OnSampled(*event.answer, now);
    }
}

void Sampler::OnLost(std::string const& problem, std::string const& code) {
    activity_.Reset();
    unread_ = 0;
    snapshot_.workerRestarts = static_cast<std::uint64_t>(link_.Restarts());
    LoseSample(problem, code);
}

void Sampler::OnOpened(Answer const& answer, Moment const& now) {
    if (!answer.done || !answer.board) {
        link_.Replace(now.steady);
        OnLost(answer.problem, answer.code);
        return;
    }
    snapshot_.board = answer.board;
    nextSample_ = now.steady;
    LoseSample("No sample was taken yet.", "starting");
}

void Sampler::OnSampled(Answer const& answer, Moment const& now) {
    if (now.steady >= nextSample_) {
        PlanNextSample(now);
    }
    snapshot_.durations.Add(now.fine - sentAt_);
    CountFailures(answer);
    if (!answer.done || answer.readings.CountAvailable() == 0) {
        std::string const problem = answer.problem.empty() ? "No sensor could be read." : answer.problem;
        std::string const code = answer.code.empty() ? "unread" : answer.code;
        if (++unread_ >= kMostUnread) {
            link_.Replace(now.steady);
            OnLost(problem, code);
        } else {
            LoseSample(problem, code);
        }
        return;
    }
    unread_ = 0;
    Sample sample{.time = now.wall, .steadyTime = now.steady, .readings = answer.readings, .shown = answer.shown};
    std::optional<double> const& counter = answer.readings[GPUTUNE_HWM_GPU_LOAD];
    if (snapshot_.board->vendor == GPUTUNE_VENDOR_INTEL && counter) {
        sample.load = activity_.Add(*counter, sentAt_, now.fine);
    }
    snapshot_.sample = std::move(sample);
    snapshot_.lastSampleTime = now.wall;
    snapshot_.problem.clear();
    snapshot_.problemCode.clear();
    ++snapshot_.revision;
}

void Sampler::CountFailures(Answer const& answer) {
    auto& counts = snapshot_.readFailures;
    for (FailedCall const& call : answer.failedCalls) {
        std::pair key(ShortText(call.function, kLongestName), FailureCode(call.answer));
        if (counts.size() >= kMostPairs && counts.count(key) == 0) {
            auto const sameFunction = counts.lower_bound({key.first, ""});
            bool const isKnown = sameFunction != counts.end() && sameFunction->first.first == key.first;
            key = {isKnown ? key.first : kOther, kOther};
        }
        ++counts[key];
    }
}

void Sampler::LoseSample(std::string const& problem, std::string const& code) {
    if (snapshot_.sample || snapshot_.problem != problem || snapshot_.problemCode != code) {
        ++snapshot_.revision;
    }
    snapshot_.sample.reset();
    snapshot_.problem = problem;
    snapshot_.problemCode = code;
}

}  // namespace gputune::tool
