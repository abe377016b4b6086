#include "ScriptedCore.h"

#include <algorithm>
#include <cstring>

#include "Outside.h"

namespace gputune::test {

namespace {

unsigned char* Pointer(Word word) {
    return reinterpret_cast<unsigned char*>(word);
}

}  // namespace

ScriptedCore::ScriptedCore(ScriptedInterface scripted) : interface_(std::move(scripted)), hidden_(interface_.unusual) {}

int ScriptedCore::Answer(char const* name, Word const* words, double const* doubles) {
    Outside const outside;
    auto const known = interface_.signatures.find(name);
    if (known == interface_.signatures.end() && !interface_.otherSignature) {
        return -8;
    }
    Signature const& signature = known == interface_.signatures.end() ? *interface_.otherSignature : known->second;
    Record(name, signature, words, doubles);
    Word arguments[kMaxWords];
    std::copy_n(calls_.back().words, kMaxWords, arguments);
    if (doubles != nullptr) {
        // What happens to be in the other register of such an argument is none.
        for (std::size_t position = 0; signature.arguments[position] != '\0'; ++position) {
            if (signature.arguments[position] == 'd') {
                std::memcpy(&arguments[position], &doubles[position], sizeof(Word));
            }
        }
    }
    return interceptor_ != nullptr ? interceptor_->Answer(name, arguments) : AsOrdered(name, arguments);
}

int ScriptedCore::AsOrdered(char const* name, Word const* words) {
    auto const own = scripts_.find(For(name, words[0]));
    Script& script = own == scripts_.end() ? scripts_[name] : own->second;
    Response const& response = script.responses[std::min(script.calls, script.responses.size() - 1)];
    ++script.calls;
    for (Output const& output : response.outputs) {
        Perform(output, words);
    }
    return response.result;
}

void ScriptedCore::Record(char const* name, Signature const& signature, Word const* words, double const* doubles) {
    ScriptedCall call{};
    call.entryPoint = name;
    if (doubles != nullptr) {
        std::copy_n(doubles, kMaxDoubles, call.doubles);
    }
    for (char const* kind = signature.arguments; *kind != '\0'; ++kind) {
        int const position = call.wordCount++;
        Word const word = words[position];
        call.words[position] = word;
        if (*kind == 'i') {
            // The other half of a 64-bit register counts for nothing.
            call.words[position] = static_cast<int>(word);
        } else if (*kind == 'a') {
            allocator_ = reinterpret_cast<Allocator>(word);
        } else if (*kind == 'd' && doubles == nullptr) {
            call.words[position + 1] = words[position + 1];
            ++call.wordCount;
        } else if (*kind == 'r' && word != 0) {
            int size = signature.recordSize;
            if (size == kSizeInRecord) {
                std::memcpy(&size, Pointer(word), sizeof size);
            }
            call.recordSize = std::clamp(size, 0, kMaxRecord);
            std::memcpy(call.record, Pointer(word), static_cast<std::size_t>(call.recordSize));
        }
    }
    calls_.push_back(call);
}

void ScriptedCore::Perform(Output const& output, Word const* words) {
    if (words[output.argument] == 0) {
        return;
    }
    unsigned char* const target = Pointer(words[output.argument]) + output.offset;
    switch (output.kind) {
        case Output::Kind::Write:
            std::copy(output.bytes.begin(), output.bytes.end(), target);
            break;
        case Output::Kind::WriteThrough: {
            unsigned char* inner = nullptr;
            std::memcpy(&inner, target, sizeof inner);
            std::copy(output.bytes.begin(), output.bytes.end(), inner);
            break;
        }
        case Output::Kind::Allocate: {
            void* const block = output.bytes.empty() ? nullptr : AskForMemory(static_cast<int>(output.bytes.size()));
            if (block != nullptr) {
                std::memcpy(block, output.bytes.data(), output.bytes.size());
            }
            std::memcpy(target, &block, sizeof block);
            break;
        }
    }
}

void* ScriptedCore::Find(std::string const& name) const {
    Outside const outside;
    auto const found = interface_.entryPoints.find(name);
    return found == interface_.entryPoints.end() || hidden_.contains(name) ? nullptr : found->second;
}

void ScriptedCore::OnHiddenChange(HiddenHandler handler) {
    onHiddenChange_ = std::move(handler);
    HiddenChanged();
}

void ScriptedCore::HiddenChanged() {
    if (onHiddenChange_) {
        onHiddenChange_(hidden_);
    }
}

bool ScriptedCore::Has(char const* entryPoint) const {
    return interface_.entryPoints.contains(entryPoint);
}

void ScriptedCore::Reset() {
    scripts_.clear();
    calls_.clear();
    allocator_ = nullptr;
    interceptor_ = nullptr;
    hidden_ = interface_.unusual;
    HiddenChanged();
}

void ScriptedCore::Result(char const* entryPoint, int result) {
    Newest(entryPoint).result = result;
}

void ScriptedCore::Add(char const* entryPoint, Output::Kind kind, int argument, int offset, void const* bytes,
                       int size) {
    auto const* const first = static_cast<unsigned char const*>(bytes);
    Newest(entryPoint).outputs.push_back({kind, argument, offset, Bytes(first, first + size)});
}

void ScriptedCore::Write(char const* entryPoint, int argument, int offset, void const* bytes, int size) {
    Add(entryPoint, Output::Kind::Write, argument, offset, bytes, size);
}

void ScriptedCore::WriteThrough(char const* entryPoint, int argument, int offset, void const* bytes, int size) {
    Add(entryPoint, Output::Kind::WriteThrough, argument, offset, bytes, size);
}

void ScriptedCore::Allocate(char const* entryPoint, int argument, void const* bytes, int size) {
    Add(entryPoint, Output::Kind::Allocate, argument, 0, bytes, size);
}

void ScriptedCore::Then(char const* entryPoint) {
    scripts_[entryPoint].responses.emplace_back();
}

void ScriptedCore::Hide(char const* entryPoint) {
    hidden_.insert(entryPoint);
    HiddenChanged();
}

void ScriptedCore::Show(char const* entryPoint) {
    hidden_.erase(entryPoint);
    HiddenChanged();
}

int ScriptedCore::CallCount() const {
    return static_cast<int>(calls_.size());
}

ScriptedCall const& ScriptedCore::CallAt(int index) const {
    return calls_.at(static_cast<std::size_t>(index));
}

void ScriptedCore::ClearCalls() {
    calls_.clear();
}

void* ScriptedCore::AskForMemory(int size) {
    CallBack const callBack;
    return allocator_ == nullptr ? nullptr : allocator_(size);
}

void* ScriptedCore::AskWithOddStack(int size) {
    CallBack const callBack;
#if defined(__x86_64__)
    // No 64-bit code calls so.
    return allocator_(size);
#else
    void* block = nullptr;
    // stdcall: the callee pops the size, so the padding alone is taken back here.
    __asm__ volatile(
        "movl %%esp, %%esi\n\t"
        "andl $-16, %%esp\n\t"
        "subl $8, %%esp\n\t"
        "pushl %2\n\t"
        "call *%1\n\t"
        "movl %%esi, %%esp\n\t"
        : "=a"(block)
        : "r"(allocator_), "r"(size)
        : "esi", "ecx", "edx", "memory", "cc");
    return block;
#endif
}

}  // namespace gputune::test
