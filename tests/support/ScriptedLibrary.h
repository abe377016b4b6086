// A vendor's control library that answers as it is told to, byte by byte, and records what crossed the table.
//
// It knows no record layout of the product's: what it writes and what it remembers are plain bytes, and its own table
// of the entry points' arguments was entered by hand, so that a mistake on either side shows.
//
// Responses. Every entry point starts with one response: return 0 and write nothing. An order changes the response
// begun last; Then begins the next one, which holds from the following call on. The last response holds for all later
// calls. An order for "name@1F" (the number in hexadecimal, see For) is one for the calls whose first argument is 0x1F;
// these calls then have responses of their own.
//
// Arguments are counted in 32-bit words from 0, so a double takes two.
//
// Under Windows it is a DLL of its own; only plain data crosses this interface.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace gputune::test {

constexpr int kMaxWords = 8;
constexpr int kMaxRecord = 2600;

struct ScriptedCall {
    char const* entryPoint;
    int wordCount;
    int words[kMaxWords];              // as the caller passed them; pointers as numbers
    int recordSize;                    // of the record the caller passed in; 0 when the entry takes none
    unsigned char record[kMaxRecord];  // its bytes on entry
};

// Answers calls in a library's stead.
class Interceptor {
public:
    // `words` are the call's arguments. Everything that ScriptedLibrary::AsOrdered does is its own choice, in its own
    // order.
    virtual int Answer(char const* entryPoint, int const* words) = 0;

protected:
    ~Interceptor() = default;
};

class ScriptedLibrary {
public:
    // Whether the library can have an entry point of this name, hidden or not.
    virtual bool Has(char const* entryPoint) const = 0;

    // Forget all orders and calls, and who answers instead.
    virtual void Reset() = 0;

    virtual void Result(char const* entryPoint, int result) = 0;

    // Write bytes to where the argument points, from `offset` on. A null argument is left alone.
    virtual void Write(char const* entryPoint, int argument, int offset, void const* bytes, int size) = 0;

    // The same for the pointer that stands at `offset` of what the argument points to: write to where that one points.
    virtual void WriteThrough(char const* entryPoint, int argument, int offset, void const* bytes, int size) = 0;

    // Hand a list out: a block of exactly `size` bytes from the client's allocation callback, its address into the
    // pointer that the argument points to. Of size 0: a null pointer, without asking for memory.
    virtual void Allocate(char const* entryPoint, int argument, void const* bytes, int size) = 0;

    virtual void Then(char const* entryPoint) = 0;

    // The library does not have the entry point; or does have one that it usually has not.
    virtual void Hide(char const* entryPoint) = 0;
    virtual void Show(char const* entryPoint) = 0;

    virtual int CallCount() const = 0;
    virtual ScriptedCall const& CallAt(int index) const = 0;
    virtual void ClearCalls() = 0;

    // Let `interceptor` answer from now on (null: the orders again), and answer a call as it was ordered. Calls are
    // recorded either way.
    virtual void AnswerBy(Interceptor* interceptor) = 0;
    virtual int AsOrdered(char const* entryPoint, int const* words) = 0;

    // What the client's allocation callback returns for a size: null while the library knows of none.
    virtual void* AskForMemory(int size) = 0;

    // The same with a stack that is 4 bytes off a 16-byte boundary, as other compilers' code does.
    virtual void* AskWithOddStack(int size) = 0;

protected:
    ~ScriptedLibrary() = default;
};

// A handle that a vendor's library hands out and is given back. Of a row of handles each is one more than the last.
enum class Handle : std::uintptr_t {};

constexpr Handle operator+(Handle first, int position) {
    return Handle{static_cast<std::uintptr_t>(first) + static_cast<std::uintptr_t>(position)};
}

// The name under which orders are given for the calls of an entry point that have this first argument.
inline std::string For(std::string const& entryPoint, int firstArgument) {
    char text[16];
    std::snprintf(text, sizeof text, "@%X", static_cast<unsigned>(firstArgument));
    return entryPoint + text;
}
inline std::string For(std::string const& entryPoint, Handle handle) {
    return For(entryPoint, static_cast<int>(handle));
}

}  // namespace gputune::test
