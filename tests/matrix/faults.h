// What can be wrong with a vendor's entry point: every kind of fault there is, made from what is known of the entry
// point's outputs (vendor_outputs.h).
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
        Word,            // the 4 bytes at `offset` of the argument are `value`
        OffBy,           // the same for the healthy number plus `value`
        Unterminated,    // `size` characters at `offset` of the argument, without an end
        NullList,        // of kPromisedRecords
        ShortList,       // likewise, in a block of `value` bytes
        ForeignList,     // in memory that the client did not provide
        UnreadableList,  // likewise, at an address where nothing is
        NoMemory,        // the library under test gets none, in its allocation `value` (from 1)
        NoMoreMemory,    // the same from this one on
    };
    Kind kind;
    int value = 0;
    int argument = 0;
    int offset = 0;
    int size = 0;
};

// Which of an operation's calls of the entry point it meets.
enum class Calls { Every, First, Later };

// In the place of an entry point's name: all of them at once.
constexpr char kEveryEntryPoint[] = "everything";

std::string NameOf(Fault const& fault);
std::string NameOf(Calls calls);

// All of an entry point's, but for the lack of memory, which is the client's.
std::vector<Fault> FaultsOf(std::string const& entryPoint);

// Those of a library that has lost its board, or its mind.
std::vector<Fault> FaultsOfEverything();

// What a library says of a list that is not as long, or not there.
constexpr int kPromisedRecords = 5;

}  // namespace gputune::matrix
