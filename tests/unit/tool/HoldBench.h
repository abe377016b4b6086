// A hold on a board that a test makes up, with a worker that does what the test wants, and a clock that the test moves.
#pragma once

#include <algorithm>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/hold/Hold.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

class HoldBench : public HoldPort {
public:
    explicit HoldBench(std::optional<HoldSettings> settings, std::uint32_t api = GPUTUNE_API_OVERDRIVEN)
        : hold_(std::move(settings), *this) {
        board.vendor = api == GPUTUNE_API_IGCL ? GPUTUNE_VENDOR_INTEL : GPUTUNE_VENDOR_AMD;
        board.api = api;
        board.adapter = 0;
        board.name = "A board";
    }

    static HoldSettings FanSettings() {
        HoldSettings settings;
        settings.law.points = {{.FanSpeed = 20, .FanTemperature = 40}, {.FanSpeed = 100, .FanTemperature = 80}};
        return settings;
    }

    // The board, and how its worker behaves.
    BoardFacts board{};
    BoardSettings shown{.powerLimit = 0, .temperatureLimit = 84, .gpuClock = 1300, .memoryClock = 2000};
    std::optional<double> temperature = 60;
    double load = 50;
    std::optional<int> fan{};  // nothing: automatic control
    bool hangs = false;
    bool refuses = false;              // every order that changes something
    bool fails = false;                // to open the board
    std::set<Order> refused{};         // the same, order by order
    std::optional<Order> crashesIn{};  // once
    std::optional<Order> alwaysCrashesIn{};
    double answerTime = 0.01;
    bool dropsPower = false;  // with every fan write

    // What happened outside.
    std::vector<Order> orders{};
    std::vector<HoldReport> reports{};
    std::vector<std::string> steps{};  // "journal", the orders, "no journal", in their order
    std::optional<TakeBack> journal{};
    std::optional<Journal> left{};
    std::string refusal{};  // at the beginning
    int workers = 0;
    int releases = 0;  // that the driver took
    std::optional<TakeBack> armed{};
    double now = 1000;

    Hold& Get() { return hold_; }

    // Lets time pass: the worker answers, the hold acts.
    void Run(double seconds) {
        double const end = now + seconds;
        int looks = 0;
        while (!hold_.IsEnded()) {
            // A hold that asks to be called again without reason would take a whole processor.
            if (++looks > 100 * (seconds + 1)) {
                throw std::logic_error("the hold never rests");
            }
            double next = hold_.NextTime();
            bool const answers = pending_.has_value() && !hangs;
            if (answers) {
                next = std::min(next, answerAt_);
            }
            if (next > end) {
                break;
            }
            now = std::max(now, next);
            if (answers && now >= answerAt_) {
                Deliver();
            }
            hold_.OnTime(now);
        }
        now = end;
    }

    void RunUntilHeld() { Run(5); }
    bool Has(HoldEvent event) const { return Count(event) > 0; }
    std::size_t Count(HoldEvent event) const {
        return static_cast<std::size_t>(std::count_if(
            reports.begin(), reports.end(), [event](HoldReport const& report) { return report.event == event; }));
    }
    std::size_t CountOrders(Order order) const {
        return static_cast<std::size_t>(std::count(orders.begin(), orders.end(), order));
    }
    std::string Text(HoldEvent event) const {
        auto const found = std::find_if(reports.rbegin(), reports.rend(),
                                        [event](HoldReport const& report) { return report.event == event; });
        return found == reports.rend() ? "" : found->text;
    }

    void StartWorker() override {
        ++workers;
        armed.reset();
    }
    void EndWorker() override { pending_.reset(); }
    void SendToWorker(std::string const& line) override {
        pending_ = ReadRequest(line);
        if (pending_) {
            answerAt_ = now + answerTime;
            orders.push_back(pending_->order);
            steps.push_back(OrderName(pending_->order));
        }
    }
    std::optional<Journal> Begin(BoardFacts const&) override {
        if (!refusal.empty()) {
            throw ToolError(refusal);
        }
        return left;
    }
    void WriteJournal(TakeBack& takeBack) override {
        takeBack.journalFile = "journal";
        journal = takeBack;
        steps.emplace_back("journal");
    }
    void RemoveJournal() override {
        journal.reset();
        left.reset();
        steps.emplace_back("no journal");
    }
    void Report(HoldReport const& report) override { reports.push_back(report); }

private:
    void Deliver() {
        Request const request = *pending_;
        pending_.reset();
        if (crashesIn == request.order || alwaysCrashesIn == request.order) {
            crashesIn.reset();
            hold_.OnGone(now);
            return;
        }
        hold_.OnLine(ToLine(Obey(request)), now);
    }

    Answer Obey(Request const& request) {
        Answer answer{.order = request.order};
        bool const changes = request.order != Order::Open && request.order != Order::Sample &&
                             request.order != Order::Ping && request.order != Order::Arm;
        if ((refuses && changes) || refused.count(request.order) > 0 || (fails && request.order == Order::Open)) {
            answer.done = false;
            answer.problem = "The driver refused it.";
            answer.code = "refused";
            answer.shown = shown;
            return answer;
        }
        switch (request.order) {
            case Order::Open:
                answer.board = board;
                break;
            case Order::Ping:
                break;
            case Order::Arm:
                armed = request.takeBack;
                break;
            case Order::Sample:
                answer.readings[GPUTUNE_HWM_GPU_TEMPERATURE] = temperature;
                answer.readings[GPUTUNE_HWM_GPU_LOAD] = load;
                break;
            case Order::AutomaticFan:
                ++releases;
                fan.reset();
                break;
            case Order::FanSpeed:
                fan = request.percent;
                if (dropsPower) {
                    shown.powerLimit = 0;
                }
                break;
            case Order::FanCurve:
                shown.fanCurve = request.curve;
                break;
            case Order::PowerLimit:
                shown.powerLimit = request.percent;
                break;
            case Order::Profile:
                shown.powerLimit = 20;
                shown.gpuClock = 1400;
                break;
            case Order::TakeBack:
                fan.reset();
                if (request.takeBack->power) {
                    shown.powerLimit = request.takeBack->before.powerLimit;
                }
                if (request.takeBack->clocks) {
                    shown.gpuClock = request.takeBack->before.gpuClock;
                }
                break;
        }
        answer.shown = shown;
        return answer;
    }

    std::optional<Request> pending_;
    double answerAt_ = 0;
    Hold hold_;
};

}  // namespace gputune::tool
