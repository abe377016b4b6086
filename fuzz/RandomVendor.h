// A vendor's library that answers as the input decides: like a healthy board, with a failure, with damaged records and
// lists, or without writing anything.
#pragma once

#include "Input.h"
#include "ScriptedLibrary.h"
#include "vendor_outputs.h"

namespace gputune::fuzz {

class RandomVendor final : public test::Interceptor {
public:
    RandomVendor(test::ScriptedLibrary& library, Input& input) : library_(library), input_(input) {
        library_.AnswerBy(this);
    }
    ~RandomVendor() { library_.AnswerBy(nullptr); }
    RandomVendor(RandomVendor const&) = delete;
    RandomVendor& operator=(RandomVendor const&) = delete;

    int Answer(char const* entryPoint, int const* words) override;

private:
    int Result(char const* entryPoint);
    void WriteAny(test::VendorOutput const& output, int const* words, bool withLists);
    void WriteBytes(unsigned char* target, std::size_t size);
    void WriteList(void** target);

    test::ScriptedLibrary& library_;
    Input& input_;
};

}  // namespace gputune::fuzz
