// Where the values come from that a board is sent. Every one must come from the caller, from a successful reading, from
// a range or default that was read, or be a constant of the interface.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "steps.h"

namespace gputune::matrix {

// What successful calls have written, in 32-bit words, since the process began.
class Readings {
public:
    void Add(std::string const& source, std::size_t word, int value);

    // All values that this word ever had; empty when it was never read.
    std::set<int> const& At(std::string const& source, std::size_t word) const;
    bool Has(std::string const& source, std::size_t word, int value) const { return At(source, word).contains(value); }

    std::size_t Words(std::string const& source) const;

private:
    std::map<std::string, std::vector<std::set<int>>> values_;
};

// The sources are the entry points' names, but for the two tables of Overdrive8, each of which one of two entry points
// fills. The ranges are four words for each setting: feature, minimum, maximum, default. The current settings are one.
constexpr char kOd8Ranges[] = "Overdrive8's ranges";
constexpr char kOd8Current[] = "Overdrive8's current settings";

// A call that may set something, with what can explain its values.
class Sending {
public:
    Sending(char const* entryPoint, int const* words, Step const& step, Readings const& readings)
        : entryPoint_(entryPoint), words_(words), step_(step), readings_(readings) {}

    std::string_view EntryPoint() const { return entryPoint_; }
    int const* Record(std::size_t argument) const { return reinterpret_cast<int const*>(words_[argument]); }
    double DoubleArgument(std::size_t word) const;

    Readings const& Read() const { return readings_; }
    bool IsBy(std::string_view operation) const;
    int Argument(std::size_t position) const { return step_.arguments[position]; }
    // The predefined mode that the step applies; null for other steps.
    ModeValues const* Mode() const;

    // Records a value that is not explained, with its field and that one's position among fields of the same kind.
    void Expect(bool isExplained, char const* field, int position, double value);

    std::string const& Unexplained() const { return unexplained_; }

private:
    std::string_view entryPoint_;
    int const* words_;
    Step const& step_;
    Readings const& readings_;
    std::string unexplained_;
};

// Judge the values of a call; those that set nothing pass. Defined in origins_amd.cpp and origins_intel.cpp.
void JudgeAmd(Sending& sending);
void JudgeIntel(Sending& sending);

class Origins {
public:
    // A step begins.
    void Begin(Step const& step);

    // The step calls an entry point: judges what it sends.
    void Called(char const* entryPoint, int const* words);

    // The call has succeeded: remembers what it has written. `listBytes`: of the list that it handed out.
    void Succeeded(char const* entryPoint, int const* words, int listBytes);

    // The library has no such entry point.
    void Missing(std::string const& entryPoint);

    // The values without an origin that the step has sent; empty when there are none.
    std::string const& Unexplained() const { return unexplained_; }

private:
    Readings readings_;
    Step const* step_ = &Initialisation();
    int recordBytes_ = 0;
    std::string unexplained_;
};

}  // namespace gputune::matrix
