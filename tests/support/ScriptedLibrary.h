// A vendor's control library that returns and writes the bytes that a test orders, and records every call with its
// arguments.
//
// It shares no record layout with src/: it writes and records plain bytes, and its table of the entry points' arguments
// was entered by hand, so that a mistake on either side shows.
//
// Responses. Every entry point starts with one response: return 0 and write nothing. An order (Result, Write,
// WriteThrough, Allocate) changes the newest response. Then adds a response, for the next call. The newest one also
// answers all later calls. An order for For(name, 0x1F) is for the calls whose first argument is 0x1F; they have
// responses of their own.
//
// Arguments are counted in words of the processor, from 0. A double takes two words of a 32-bit process, and one of a
// 64-bit process.
//
// Under Windows every library is a DLL of its own: only plain data may cross this interface.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace gputune::test {

// An argument: a number with its sign, or a pointer or a handle as a number.
using Word = std::intptr_t;

constexpr int kMaxWords = 8;
// Of so many arguments a 64-bit call passes doubles in registers of their own.
constexpr int kMaxDoubles = 4;
constexpr int kMaxRecord = 2600;

struct ScriptedCall {
    char const* entryPoint;
    int wordCount;
    Word words[kMaxWords];             // as the caller passed them
    double doubles[kMaxDoubles];       // the registers of a 64-bit call, whether the arguments are doubles or not
    int recordSize;                    // of the record the caller passed in; 0 when the entry takes none
    unsigned char record[kMaxRecord];  // its bytes on entry
};

// Answers calls instead of the orders.
class Interceptor {
public:
    // `words` are the call's arguments, as bits where they are doubles. Returns the result; writes the outputs itself
    // or lets ScriptedLibrary::AsOrdered do so.
    virtual int Answer(char const* entryPoint, Word const* words) = 0;

protected:
    ~Interceptor() = default;
};

class ScriptedLibrary {
public:
    // Whether the library can have an entry point of this name, hidden or not.
    virtual bool Has(char const* entryPoint) const = 0;

    // Forget all orders, all calls and the interceptor.
    virtual void Reset() = 0;

    virtual void Result(char const* entryPoint, int result) = 0;

    // Write bytes to where the argument points, from `offset` on. Nothing is written through a null argument.
    virtual void Write(char const* entryPoint, int argument, int offset, void const* bytes, int size) = 0;

    // Write bytes to where a pointer points that stands at `offset` of what the argument points to.
    virtual void WriteThrough(char const* entryPoint, int argument, int offset, void const* bytes, int size) = 0;

    // Hand out a list: `bytes`, in a block of exactly this size from the client's allocation callback. The block's
    // address goes into the pointer that the argument points to. For size 0 it is null, and no memory is asked for.
    virtual void Allocate(char const* entryPoint, int argument, void const* bytes, int size) = 0;

    virtual void Then(char const* entryPoint) = 0;

    // From now on the library does not have the entry point; or has it again, or has one that it usually lacks.
    virtual void Hide(char const* entryPoint) = 0;
    virtual void Show(char const* entryPoint) = 0;

    virtual int CallCount() const = 0;
    virtual ScriptedCall const& CallAt(int index) const = 0;
    virtual void ClearCalls() = 0;

    // Let `interceptor` answer from now on; null: the orders again. Calls are recorded either way.
    virtual void AnswerBy(Interceptor* interceptor) = 0;
    // For an interceptor: do what is ordered for this call, and return the result.
    virtual int AsOrdered(char const* entryPoint, Word const* words) = 0;

    // Call the client's allocation callback, and return its block; null while the client has given no callback.
    virtual void* AskForMemory(int size) = 0;

    // The same with a stack that is only aligned to 4 bytes, as code of other compilers leaves it.
    virtual void* AskWithOddStack(int size) = 0;

protected:
    ~ScriptedLibrary() = default;
};

// A handle that a vendor's library hands out and is given back. Of a row of handles each is one more than the last.
enum class Handle : std::uintptr_t {};

// A handle that a scripted library gives out. In a 64-bit process it has an upper half, which nobody may lose.
constexpr Handle ScriptedHandle(std::uint32_t number) {
    return Handle{static_cast<std::uintptr_t>(std::uint64_t{0x7A11'0B5E} << 32 | number)};
}

// How tests name it.
inline std::string NumberOf(Handle handle) {
    auto const number = static_cast<std::uint32_t>(handle);
    char text[32];
    std::snprintf(text, sizeof text, "%X%s", number,
                  handle == Handle{} || handle == ScriptedHandle(number) ? "" : ", half of which is lost");
    return text;
}

constexpr Handle operator+(Handle first, int position) {
    return Handle{static_cast<std::uintptr_t>(first) + static_cast<std::uintptr_t>(position)};
}

// The name to give orders for, when they are only for the calls of an entry point that have this first argument.
inline std::string For(std::string const& entryPoint, Word firstArgument) {
    char text[24];
    std::snprintf(text, sizeof text, "@%llX", static_cast<unsigned long long>(firstArgument));
    return entryPoint + text;
}
inline std::string For(std::string const& entryPoint, Handle handle) {
    return For(entryPoint, static_cast<Word>(handle));
}

}  // namespace gputune::test
