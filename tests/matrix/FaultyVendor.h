// A vendor's library on which one entry point is faulty, and all others answer as a healthy board's do.
#pragma once

#include <map>
#include <string>

#include "Machine.h"
#include "Origins.h"
#include "faults.h"

namespace gputune::matrix {

class FaultyVendor final : public test::Interceptor {
public:
    // Answers for the machine's library from now on.
    explicit FaultyVendor(test::Machine& machine);
    ~FaultyVendor();
    FaultyVendor(FaultyVendor const&) = delete;
    FaultyVendor& operator=(FaultyVendor const&) = delete;

    // For boards whose enumeration of thermal controllers has an end: how many there are.
    void SetThermalControllers(int count) { thermalControllers_ = count; }

    void Break(std::string const& entryPoint, Fault const& fault, Calls calls);
    void Mend();

    // It is going to be called: nothing is remembered of an entry point for the first time while memory is watched.
    void Expect(std::string const& entryPoint);

    // An operation begins: its calls are counted from here, and what it sends is held against its origins.
    void Begin(Step const& step);

    // How often the operation met the fault, and how often it called what.
    int Hits() const { return hits_; }
    std::map<std::string, int> const& Counts() const { return counts_; }

    // What it has sent without an origin; empty when everything has one.
    std::string const& Unexplained() const { return origins_.Unexplained(); }

    int Answer(char const* entryPoint, int const* words) override;

private:
    int AsHealthy(char const* entryPoint, int const* words);
    int AsFaulty(char const* entryPoint, int const* words);
    void Fill(char const* entryPoint, int const* words) const;
    void HandOut(char const* entryPoint, int const* words, void* list, int bytes);

    test::Machine& machine_;
    test::ScriptedLibrary& library_;
    int thermalControllers_ = 0;
    std::string entryPoint_;
    Fault fault_{};
    Calls calls_ = Calls::Every;
    int hits_ = 0;
    int listBytes_ = 0;  // of the list that the call at work hands out
    Origins origins_;
    std::map<std::string, int> counts_;
};

}  // namespace gputune::matrix
