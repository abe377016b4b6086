// The time of the simulated boards: real time until the first Advance; from then on, only Advance moves it.
#pragma once

#include <chrono>

namespace gputune::sim {

class TimeSource {
public:
    // Seconds since construction.
    double Now() const {
        return byHand_ ? seconds_ : std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
    }

    void Advance(int milliseconds) {
        seconds_ = Now() + milliseconds / 1000.0;
        byHand_ = true;
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    bool byHand_ = false;
    double seconds_ = 0;
};

}  // namespace gputune::sim
