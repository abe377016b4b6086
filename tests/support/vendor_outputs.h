// What the vendors' entry points write through their pointer arguments, for tests that let them write something else.
#pragma once

#include <vector>

namespace gputune::test {

struct VendorOutput {
    enum class Kind {
        Record,   // `size` bytes, or as many as the record's first int says (kSizeInRecord)
        List,     // the address of a list of records of `size` bytes; argument - 1 points to their number
        Handles,  // pointers; argument - 1 points to their number
    };
    int argument;
    int size;
    Kind kind = Kind::Record;
};

// Empty for an entry point that writes nothing or that the library never calls.
std::vector<VendorOutput> const& VendorOutputs(char const* entryPoint);

// Where an output has a count: in bytes from where the argument points; in a list, from the beginning of its block.
struct VendorCount {
    int argument;
    int offset;
};
std::vector<VendorCount> const& VendorCounts(char const* entryPoint);

// Where an output has a text of at most `size` characters with its terminator.
struct VendorText {
    int argument;
    int offset;
    int size;
};
std::vector<VendorText> const& VendorTexts(char const* entryPoint);

// The results with which this entry point can fail: the vendor's published codes, some unpublished ones, and the
// vendor's warnings, which do not count as success either.
std::vector<int> const& FailureCodes(char const* entryPoint);

}  // namespace gputune::test
