#include "RandomVendor.h"

#include <cstring>

#include "ScriptedCore.h"

namespace gputune::fuzz {

namespace {

unsigned char* Pointer(int word) {
    return reinterpret_cast<unsigned char*>(word);
}

int IntAt(int word) {
    int value = 0;
    std::memcpy(&value, Pointer(word), sizeof(value));
    return value;
}

}  // namespace

int RandomVendor::Answer(char const* entryPoint, int const* words) {
    library_.ClearCalls();
    auto const& outputs = test::VendorOutputs(entryPoint);
    // Most answers are healthy. Otherwise the library would soon give up.
    switch (input_.IsAtEnd() ? 0U : input_.Below(8)) {
        case 4: {
            int const result = library_.AsOrdered(entryPoint, words);
            for (test::VendorOutput const& output : outputs) {
                WriteAny(output, words, false);
            }
            return result;
        }
        case 5:
            return Result(entryPoint);
        case 6: {
            for (test::VendorOutput const& output : outputs) {
                WriteAny(output, words, true);
            }
            return input_.Below(4) == 0 ? Result(entryPoint) : 0;
        }
        case 7:
            return 0;
        default:
            return library_.AsOrdered(entryPoint, words);
    }
}

int RandomVendor::Result(char const* entryPoint) {
    auto const& codes = test::FailureCodes(entryPoint);
    unsigned const choice = input_.Byte();
    return choice < codes.size() ? codes[choice] : input_.Int();
}

void RandomVendor::WriteAny(test::VendorOutput const& output, int const* words, bool withLists) {
    int const word = words[output.argument];
    if (word == 0) {
        return;
    }
    switch (output.kind) {
        case test::VendorOutput::Kind::Record:
            WriteBytes(Pointer(word),
                       static_cast<std::size_t>(output.size == test::kSizeInRecord ? IntAt(word) : output.size));
            break;
        case test::VendorOutput::Kind::List:
            if (withLists) {
                WriteList(reinterpret_cast<void**>(Pointer(word)));
            }
            break;
        case test::VendorOutput::Kind::Handles:
            // Only the first handle: there is room for it.
            if (words[output.argument - 1] != 0 && IntAt(words[output.argument - 1]) > 0) {
                WriteBytes(Pointer(word), static_cast<std::size_t>(output.size));
            }
            break;
    }
}

void RandomVendor::WriteBytes(unsigned char* target, std::size_t size) {
    if (size == 0) {  // a record whose size field was damaged before
        return;
    }
    switch (input_.Below(5)) {
        case 0:  // left alone
            break;
        case 1:
            std::memset(target, static_cast<int>(input_.Byte()), size);
            break;
        case 2:  // some ints
            for (unsigned count = 1 + input_.Below(8); count > 0; --count) {
                int const value = input_.Int();
                std::size_t const place = input_.Byte() % ((size + 3) / 4) * 4;
                std::memcpy(target + place, &value, place + 4 <= size ? 4 : size - place);
            }
            break;
        case 3:  // byte by byte
            for (std::size_t place = 0; place < size && !input_.IsAtEnd(); ++place) {
                target[place] = static_cast<unsigned char>(input_.Byte());
            }
            break;
        default:  // repeated
            for (std::size_t place = 0, step = 1 + input_.Below(32); place < size; place += step) {
                target[place] = static_cast<unsigned char>(input_.Byte());
            }
    }
}

void RandomVendor::WriteList(void** target) {
    switch (input_.Below(4)) {
        case 0:
            break;
        case 1:
            *target = nullptr;
            break;
        default: {
            int const size = input_.Below(4) == 0 ? input_.Int() : static_cast<int>(input_.Byte() * 16);
            void* const block = library_.AskForMemory(size > 100000 ? 100000 : size);
            if (block != nullptr && size > 0) {
                WriteBytes(static_cast<unsigned char*>(block), static_cast<std::size_t>(size > 100000 ? 100000 : size));
            }
            *target = block;
        }
    }
}

}  // namespace gputune::fuzz
