// A vendor's library that answers as a healthy board's does, but for the calls that are faulty.
#pragma once

#include <map>
#include <string>

#include "Machine.h"
#include "Origins.h"
#include "faults.h"

namespace gputune::matrix {

class FaultyVendor final : public test::Interceptor {
public:
    // Answers the calls of the machine's library from now on. `thermalControllers`: how many Overdrive 5 enumerates.
    FaultyVendor(test::Machine& machine, int thermalControllers);
    ~FaultyVendor();
    FaultyVendor(FaultyVendor const&) = delete;
    FaultyVendor& operator=(FaultyVendor const&) = delete;

    void PutFault(std::string const& entryPoint, Fault const& fault, Calls calls);
    void RemoveFault();

    // Makes room to record calls of these entry points, so that recording the first one takes no memory.
    void PrepareForCalls(std::map<std::string, int> const& calls);

    // Calls from here on are those of this step.
    void BeginStep(Step const& step);

    // Of the step: how many calls were faulty, and how many there were of each entry point.
    int Hits() const { return hits_; }
    std::map<std::string, int> const& Counts() const { return counts_; }

    // The values without an origin that the step has sent; empty when there are none.
    std::string const& Unexplained() const { return origins_.Unexplained(); }

    int Answer(char const* entryPoint, int const* words) override;

private:
    int AsHealthy(char const* entryPoint, int const* words);
    int AsFaulty(char const* entryPoint, int const* words);
    void Fill(char const* entryPoint, int const* words) const;
    void HandOut(char const* entryPoint, int const* words, void* list, int bytes);

    test::Machine& machine_;
    test::ScriptedLibrary& library_;
    int thermalControllers_;
    std::string entryPoint_;
    Fault fault_{};
    Calls calls_ = Calls::Every;
    int hits_ = 0;
    int listBytes_ = 0;  // of the list that the current call hands out
    Origins origins_;
    std::map<std::string, int> counts_;
};

}  // namespace gputune::matrix
