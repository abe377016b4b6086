// A sampler with a board and a worker that a test makes up, and clocks that the test moves.
#pragma once

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "tool/serve/Sampler.h"
#include "tool/values/Errors.h"

namespace gputune::tool {

class SamplerBench : public SamplerPort {
public:
    explicit SamplerBench(double interval = 1, std::uint32_t vendor = GPUTUNE_VENDOR_AMD)
        : sampler_(interval, *this, Now()) {
        board.vendor = vendor;
        board.api = vendor == GPUTUNE_VENDOR_INTEL ? GPUTUNE_API_IGCL : GPUTUNE_API_OVERDRIVEN;
        board.adapter = 0;
        board.name = "A board";
        readings[GPUTUNE_HWM_GPU_TEMPERATURE] = 60;
    }

    // The board, and how its worker behaves.
    BoardFacts board{};
    Readings readings{};
    std::vector<FailedCall> failedCalls{};
    std::optional<bool> power{};
    double counterGrowth = 0;  // of the load's reading, in a second
    double answerTime = 0.01;
    bool hangs = false;
    bool crashes = false;
    bool fails = false;    // to open the board
    bool refuses = false;  // samples
    bool cannotStart = false;

    // What happened outside.
    int workers = 0;
    bool hasWorker = false;
    std::size_t samples = 0;            // that were ordered
    std::vector<double> sampleTimes{};  // of the first thousand
    std::size_t looks = 0;
    double now = 1000;
    double wallOffset = 1.7e9;

    Moment Now() const { return {.steady = now, .wall = now + wallOffset, .fine = now + 77}; }
    Sampler& Get() { return sampler_; }
    Snapshot const& Current() const { return sampler_.Current(); }
    // What a scrape would get.
    Snapshot Served() const { return AsOf(sampler_.Current(), Now()); }

    // Lets time pass: the worker answers, the sampler acts.
    void Run(double seconds) {
        double const end = now + seconds;
        std::size_t const most = looks + static_cast<std::size_t>(100 * (seconds + 1));
        for (;;) {
            // A sampler that asks to be called again without reason would take a whole processor.
            if (++looks > most) {
                throw std::logic_error("the sampler never rests");
            }
            double next = sampler_.NextTime();
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
            sampler_.OnTime(Now());
        }
        now = end;
    }

    void StartWorker() override {
        if (cannotStart) {
            throw ToolError("no process can be started");
        }
        ++workers;
        hasWorker = true;
    }
    void EndWorker() override {
        pending_.reset();
        hasWorker = false;
    }
    void SendToWorker(std::string const& line) override {
        pending_ = ReadRequest(line);
        if (!pending_) {
            throw std::logic_error("no order: " + line);
        }
        answerAt_ = now + answerTime;
        if (pending_->order == Order::Sample) {
            ++samples;
            if (sampleTimes.size() < 1000) {
                sampleTimes.push_back(now);
            }
        }
    }
    std::optional<bool> IsPowered(std::uint32_t) override { return power; }

private:
    void Deliver() {
        Order const order = pending_->order;
        pending_.reset();
        if (crashes && order == Order::Sample) {
            sampler_.OnGone(Now());
            return;
        }
        Answer answer{.order = order};
        if (order == Order::Open) {
            answer.done = !fails;
            answer.problem = fails ? "There is no supported graphics board." : "";
            answer.code = fails ? "no_supported_gpu" : "";
            answer.board = fails ? std::nullopt : std::optional(board);
        } else if (order == Order::Sample) {
            answer.done = !refuses;
            answer.problem = refuses ? "The library lost the board." : "";
            answer.code = refuses ? "failed" : "";
            answer.readings = readings;
            answer.failedCalls = failedCalls;
            if (counterGrowth != 0) {
                answer.readings[GPUTUNE_HWM_GPU_LOAD] = counterGrowth * now;
            }
        }
        sampler_.OnLine(ToLine(answer), Now());
    }

    std::optional<Request> pending_;
    double answerAt_ = 0;
    Sampler sampler_;
};

}  // namespace gputune::tool
