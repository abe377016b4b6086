// One setting that is held, and what became of it.
#pragma once

#include <string>

namespace gputune::tool {

// Another program's change, or a driver's, is answered by setting the held value again: three times at most, then the
// setting is given up. Ten minutes without a change begin the count anew.
class Claim {
public:
    bool IsHeld() const { return isHeld_; }
    void Hold() { isHeld_ = true; }
    void GiveUp() { isHeld_ = false; }

    // How often the value may still be set again is used up by one; false when the setting is to be given up.
    bool TryAgain(double now) {
        if (now - lastTry_ > kQuiet) {
            tries_ = 0;
        }
        lastTry_ = now;
        return ++tries_ <= kMostTries;
    }
    // "2 of 3".
    std::string Count() const { return std::to_string(tries_) + " of " + std::to_string(kMostTries); }

private:
    static constexpr int kMostTries = 3;
    static constexpr double kQuiet = 600;  // seconds

    bool isHeld_ = false;
    int tries_ = 0;
    double lastTry_ = 0;
};

}  // namespace gputune::tool
