// The time of the simulated boards: real time until the first Advance; from then on, only Advance moves it.
#pragma once

#include <chrono>
#include <cstdint>

namespace gputune::sim {

class TimeSource {
public:
    // Seconds since construction, or since the shared start.
    double Now() const {
        if (byHand_) {
            return seconds_;
        }
        return std::chrono::duration<double>(Elapsed()).count();
    }

    void Advance(int milliseconds) {
        seconds_ = Now() + milliseconds / 1000.0;
        byHand_ = true;
    }

    // From now on the time counts by the system's clock, which all processes have in common, and goes on while there is
    // none. Setting that clock moves it, too.
    void Share() { sharedStart_ = SystemMicroseconds(); }

    template <class Archive>
    void Exchange(Archive& archive) {
        archive(sharedStart_, byHand_, seconds_);
    }

private:
    using Microseconds = std::chrono::microseconds;

    static std::int64_t SystemMicroseconds() {
        return std::chrono::duration_cast<Microseconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    }

    std::chrono::nanoseconds Elapsed() const {
        return sharedStart_ != 0 ? Microseconds(SystemMicroseconds() - sharedStart_)
                                 : std::chrono::steady_clock::now() - start_;
    }

    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::int64_t sharedStart_ = 0;  // microseconds; 0: not shared
    bool byHand_ = false;
    double seconds_ = 0;
};

}  // namespace gputune::sim
