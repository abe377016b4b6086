// What can be wrong with a vendor's entry point. The faults of each are made from the table of its outputs
// (vendor_outputs.h).
#pragma once

#include <string>
#include <vector>

namespace gputune::matrix {

struct Fault {
    enum class Kind {
        Missing,         // the library does not have the entry point
        Code,            // returns `value` and writes nothing
        CodeAndOutputs,  // returns `value` after writing everything
        Silent,          // returns 0 and writes nothing
        Fill,            // every byte of the outputs is `value`
        Word,            // the 32-bit number at `offset` of the argument is `value`
        OffBy,           // the same number is `value` more than on the healthy board
        Unterminated,    // the text of `size` characters at `offset` of the argument has no terminator
        NullList,        // says it has kPromisedRecords, and is a null pointer
        ShortList,       // says so, in a block of `value` bytes
        ForeignList,     // says so, in memory that did not come from the client's allocation callback
        UnreadableList,  // says so, at an address that cannot be read
        NoMemory,        // the library under test gets no memory in its `value`-th allocation, counted from 1
        NoMoreMemory,    // the same, and in all later allocations
    };
    Kind kind;
    int value = 0;
    int argument = 0;
    int offset = 0;
    int size = 0;
};

// Which of a step's calls of the entry point are faulty.
enum class Calls { Every, First, Later };

// In the place of an entry point's name.
constexpr char kEveryEntryPoint[] = "everything";  // all of them at once
constexpr char kWholeLibrary[] = "library";        // the vendor's library is not on the machine
constexpr char kMemory[] = "memory";               // of the library under test

std::string NameOf(Fault const& fault);
std::string NameOf(Calls calls);

std::vector<Fault> FaultsOf(std::string const& entryPoint);
std::vector<Fault> FaultsOfEverything();

// The number of records that a faulty list is said to have.
constexpr int kPromisedRecords = 5;

}  // namespace gputune::matrix
