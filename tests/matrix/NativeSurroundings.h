// The native machine's part of a trial.
#pragma once

#include "FakeSystem.h"
#include "Trial.h"
#include "machine_native.h"
#include "memory.h"

// A function of the address sanitizer, whose header is not installed with every compiler.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();

namespace gputune::matrix {

class NativeSurroundings final : public Surroundings {
public:
    NativeSurroundings(test::Machine& machine, test::Machine::Library library)
        : exports_(WatchedExports(machine.Api())), library_(library) {}

    test::Exports const& Api() override { return exports_; }
    std::size_t MemoryInUse() override {
        // What the machine has recorded is not the library's memory.
        test::Trace().swap(test::TheSystem().trace);
        std::vector<test::LibraryLoad>().swap(test::host::Loads());
        return __sanitizer_get_current_allocated_bytes();
    }
    void RefuseMemory(int first, bool thenAll) override { matrix::RefuseMemory(first, thenAll); }
    void CountAllocations() override { matrix::CountAllocations(); }
    int Allocations() override { return matrix::Allocations(); }
    void PutLibrary(bool isThere) override {
        if (isThere) {
            test::host::InstallLibrary(library_);
        } else {
            test::RemoveLibrary(library_);
        }
    }

private:
    test::Exports const& exports_;
    test::Machine::Library library_;
};

}  // namespace gputune::matrix
