// What the vendors' entry points write through the pointers they are given: for tests that write something else.
#pragma once

#include <vector>

namespace gputune::test {

struct VendorOutput {
    enum class Kind {
        Record,  // `size` bytes, or as many as their own first int says (kSizeInRecord)
        List,  // an address in the client's memory, of a list of records of `size` bytes; its count is in argument - 1
        Handles,  // as many pointers as the argument before points to
    };
    int argument;
    int size;
    Kind kind = Kind::Record;
};

// Empty for an entry point that writes nothing, or that nobody calls.
std::vector<VendorOutput> const& VendorOutputs(char const* entryPoint);

// Where in an output the number of something stands: in bytes from where the argument points, of a list from the
// beginning of its block.
struct VendorCount {
    int argument;
    int offset;
};
std::vector<VendorCount> const& VendorCounts(char const* entryPoint);

// Where a text stands that has room for `size` characters, its end included.
struct VendorText {
    int argument;
    int offset;
    int size;
};
std::vector<VendorText> const& VendorTexts(char const* entryPoint);

// Every way in which calls of this entry point fail: the vendor's published codes, some that are in no list, and the
// vendor's warnings, which are no success either.
std::vector<int> const& FailureCodes(char const* entryPoint);

}  // namespace gputune::test
