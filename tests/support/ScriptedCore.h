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

// Defines one entry point, in a file that has `ScriptedCore& Core()`. Eight words serve for every entry point: the
// caller removes its arguments, however many there are.
#if defined(__x86_64__)
// Goes to ScriptedEntry (scripted_entry_x64.cpp) with its name in rax.
#define SCRIPTED_FUNCTION(name)     \
    extern "C" int name();          \
    __asm__(                        \
        ".text\n"                   \
        ".globl " #name "\n" #name  \
        ":\n"                       \
        "    leaq 1f(%rip), %rax\n" \
        "    jmp ScriptedEntry\n"   \
        "1:  .asciz \"" #name "\"\n");
#else
#define SCRIPTED_FUNCTION(name)                                                                                 \
    extern "C" int SCRIPTED_CDECL SCRIPTED_NAME(name)(int a, int b, int c, int d, int e, int f, int g, int h) { \
        gputune::test::Word const words[gputune::test::kMaxWords] = {a, b, c, d, e, f, g, h};                   \
        return Core().Answer(#name, words, nullptr);                                                            \
    }
#endif
#define SCRIPTED_ENTRY(name) {#name, reinterpret_cast<void*>(&SCRIPTED_NAME(name))},

namespace gputune::test {

// The size of a record that its own first int gives.
constexpr int kSizeInRecord = -1;

// What is recorded of a call.
struct Signature {
    // A letter for each argument:
    //   i  a 32-bit number      p  a pointer or a handle
    //   d  a double             r  a pointer to a record that the caller fills in
    //   w  a word of any kind   a  the client's function that allocates memory, which is remembered
    char const* arguments;
    int recordSize = 0;  // in bytes, or kSizeInRecord
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
    // `doubles` are the registers of a 64-bit call; null in a 32-bit process, where they stand among the words.
    int Answer(char const* name, Word const* words, double const* doubles);

    // The address of an entry point that is not hidden, else null.
    void* Find(std::string const& name) const;

    // Calls `handler` with the hidden names: now, and after every change of them.
    void OnHiddenChange(HiddenHandler handler);

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
    int AsOrdered(char const* entryPoint, Word const* words) override;
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
    void Record(char const* name, Signature const& signature, Word const* words, double const* doubles);
    void Perform(Output const& output, Word const* words);
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
