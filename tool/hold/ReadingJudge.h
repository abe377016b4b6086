// Whether a reading of the temperature can be trusted with a fan.
#pragma once

#include <deque>
#include <optional>
#include <string>

namespace gputune::tool {

class ReadingJudge {
public:
    struct Reading {
        double time = 0;                      // seconds; ascending
        double duration = 0;                  // seconds that it took to be read
        std::optional<double> temperature{};  // degrees Celsius; nothing: it was not read
        std::optional<double> load{};         // percent; nothing: the board does not tell
    };

    // Nothing when the reading is one to act upon; else why not, as a part of a sentence: "the temperature was not
    // read".
    std::optional<std::string> Judge(Reading const& reading);
    // Forgets the readings so far, after a time without any.
    void Reset();

private:
    std::optional<std::string> JudgeChange(Reading const& reading) const;
    bool IsStuck() const;

    std::optional<Reading> last_;    // the last one that was read in time, plausible or not
    std::deque<Reading> unchanged_;  // the readings since the temperature changed last
};

}  // namespace gputune::tool
