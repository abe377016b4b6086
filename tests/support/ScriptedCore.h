// What the three scripted libraries share: responses, recording, hidden entry points. scripted_adl.cpp,
// scripted_igcl.cpp and scripted_nvapi.cpp each add a vendor's list of entry points and their arguments.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "ScriptedLibrary.h"

#if defined(_WIN32)
#define SCRIPTED_CDECL __cdecl
#define SCRIPTED_STDCALL __stdcall
// The linker exports it under its own name.
#define SCRIPTED_NAME(name) name
#else
#define SCRIPTED_CDECL __attribute__((cdecl))
#define SCRIPTED_STDCALL __attribute__((stdcall))
// The library under test may have a function of the same name.
#define SCRIPTED_NAME(name) Scripted_##name
#endif

// Defines one entry point, in a file that has `int Answer(char const* name, int const* words)`. Eight words serve for
// every entry point: under cdecl the caller pops its arguments, however many there are.
#define SCRIPTED_FUNCTION(linkage, name)                                                                     \
    linkage int SCRIPTED_CDECL SCRIPTED_NAME(name)(int a, int b, int c, int d, int e, int f, int g, int h) { \
        int const words[gputune::test::kMaxWords] = {a, b, c, d, e, f, g, h};                                \
        return Answer(#name, words);                                                                         \
    }
#define SCRIPTED_ENTRY(name) {#name, reinterpret_cast<void*>(&SCRIPTED_NAME(name))},

namespace gputune::test {

// The size of a record that its own first int gives.
constexpr int kSizeInRecord = -1;

// What is recorded of a call.
struct Signature {
    int words;                // that its arguments take
    int recordArgument = -1;  // which argument points to a record that the caller fills in; -1: none
    int recordSize = 0;       // in bytes, or kSizeInRecord
};

struct ScriptedInterface {
    std::map<std::string, void*> entryPoints;
    std::map<std::string, Signature> signatures;
    // Of all other entry points; without it their calls return -8 and are not recorded.
    std::optional<Signature> otherSignature = std::nullopt;
    // The entry points that are hidden until a test calls Show.
    std::set<std::string> unusual = {};
};

class ScriptedCore final : public ScriptedLibrary {
public:
    using Allocator = void*(SCRIPTED_STDCALL*)(int);
    using HiddenHandler = std::function<void(std::set<std::string> const&)>;

    explicit ScriptedCore(ScriptedInterface scripted);

    // Record a call and answer it.
    int Answer(char const* name, int const* words);

    // The address of an entry point that is not hidden, else null.
    void* Find(std::string const& name) const;

    // Calls `handler` with the hidden names: now, and after every change of them.
    void OnHiddenChange(HiddenHandler handler);

    void SetAllocator(Allocator allocator) { allocator_ = allocator; }

    bool Has(char const* entryPoint) const override;
    void Reset() override;
    void Result(char const* entryPoint, int result) override;
    void Write(char const* entryPoint, int argument, int offset, void const* bytes, int size) override;
    void WriteThrough(char const* entryPoint, int argument, int offset, void const* bytes, int size) override;
    void Allocate(char const* entryPoint, int argument, void const* bytes, int size) override;
    void Then(char const* entryPoint) override;
    void Hide(char const* entryPoint) override;
    void Show(char const* entryPoint) override;
    int CallCount() const override;
    ScriptedCall const& CallAt(int index) const override;
    void ClearCalls() override;
    void AnswerBy(Interceptor* interceptor) override { interceptor_ = interceptor; }
    int AsOrdered(char const* entryPoint, int const* words) override;
    void* AskForMemory(int size) override;
    void* AskWithOddStack(int size) override;

private:
    using Bytes = std::vector<unsigned char>;

    struct Output {
        enum class Kind { Write, WriteThrough, Allocate } kind;
        int argument;
        int offset;
        Bytes bytes;
    };

    struct Response {
        int result = 0;
        std::vector<Output> outputs;
    };

    struct Script {
        std::vector<Response> responses{1};
        std::size_t calls = 0;
    };

    Response& Newest(char const* entryPoint) { return scripts_[entryPoint].responses.back(); }
    void Add(char const* entryPoint, Output::Kind kind, int argument, int offset, void const* bytes, int size);
    void Record(char const* name, Signature const& signature, int const* words);
    void Perform(Output const& output, int const* words);
    void HiddenChanged();

    ScriptedInterface interface_;
    std::map<std::string, Script> scripts_;
    std::set<std::string> hidden_;
    std::vector<ScriptedCall> calls_;
    HiddenHandler onHiddenChange_;
    Allocator allocator_ = nullptr;
    Interceptor* interceptor_ = nullptr;
};

// The three libraries. Under Windows each is in a DLL of its own, natively all are in one program.
ScriptedCore& ScriptedAdl();
ScriptedCore& ScriptedIgcl();
ScriptedCore& ScriptedNvapi();

}  // namespace gputune::test
