// The rule for what a board is sent: every value comes from the caller, a successful reading, a range or default that
// was read, or is a constant of the interface, and comes from nothing else.
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

    // All that ever stood in a word; nothing where nothing was read.
    std::set<int> const& At(std::string const& source, std::size_t word) const;
    bool Has(std::string const& source, std::size_t word, int value) const { return At(source, word).contains(value); }

    std::size_t Words(std::string const& source) const;

private:
    std::map<std::string, std::vector<std::set<int>>> values_;
};

// The sources are the entry points, but for Overdrive8's two tables, which either of two entry points fills: of each
// setting feature, minimum, maximum and default; and its current value.
constexpr char kOd8Ranges[] = "Overdrive8's ranges";
constexpr char kOd8Current[] = "Overdrive8's current settings";

// A call that may set something, and what can explain it.
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
    // The values of the predefined mode that is applied, if one is.
    ModeValues const* Mode() const;

    // A value stands in this field, the `position`-th of its kind.
    void Expect(bool isExplained, char const* field, int position, double value);

    std::string const& Unexplained() const { return unexplained_; }

private:
    std::string_view entryPoint_;
    int const* words_;
    Step const& step_;
    Readings const& readings_;
    std::string unexplained_;
};

// Nothing for calls that set nothing.
void JudgeAmd(Sending& sending);
void JudgeIntel(Sending& sending);

class Origins {
public:
    // An operation begins.
    void Begin(Step const& step);

    // A call is made.
    void Called(char const* entryPoint, int const* words);

    // It has succeeded; of a list that it handed out, there are so many bytes.
    void Succeeded(char const* entryPoint, int const* words, int listBytes);

    // The library has no such entry point.
    void Absent(std::string const& entryPoint);

    // What the operation has sent without an origin; empty when everything has one.
    std::string const& Unexplained() const { return unexplained_; }

private:
    Readings readings_;
    Step const* step_ = &Initialisation();
    int recordBytes_ = 0;
    std::string unexplained_;
};

}  // namespace gputune::matrix
