#include "FaultyVendor.h"

#include <cstring>

#include "ScriptedCore.h"
#include "vendor_outputs.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::VendorOutput;

unsigned char* Pointer(int word) {
    return reinterpret_cast<unsigned char*>(word);
}

int IntAt(unsigned char const* place) {
    int value = 0;
    std::memcpy(&value, place, sizeof value);
    return value;
}

// The block that the pointer at this place leads to.
unsigned char* ListAt(unsigned char const* place) {
    unsigned char* block = nullptr;
    std::memcpy(&block, place, sizeof block);
    return block;
}

VendorOutput const* ListOf(char const* entryPoint) {
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        if (output.kind == VendorOutput::Kind::List) {
            return &output;
        }
    }
    return nullptr;
}

// Where a fault of one number or text is: in what the argument points to, of a list in its block. Null when the client
// wants no such output.
unsigned char* PlaceOf(char const* entryPoint, int const* words, Fault const& fault) {
    if (words[fault.argument] == 0) {
        return nullptr;
    }
    unsigned char* place = Pointer(words[fault.argument]);
    VendorOutput const* const list = ListOf(entryPoint);
    if (list != nullptr && list->argument == fault.argument) {
        place = ListAt(place);
    }
    return place == nullptr ? nullptr : place + fault.offset;
}

}  // namespace

FaultyVendor::FaultyVendor(test::Machine& machine) : machine_(machine), library_(machine.Scripted()) {
    library_.AnswerBy(this);
}

FaultyVendor::~FaultyVendor() {
    library_.AnswerBy(nullptr);
}

void FaultyVendor::Break(std::string const& entryPoint, Fault const& fault, Calls calls) {
    entryPoint_ = entryPoint;
    fault_ = fault;
    calls_ = calls;
    if (fault.kind == Kind::Missing) {
        machine_.Hide(entryPoint);
    }
}

void FaultyVendor::Mend() {
    if (fault_.kind == Kind::Missing && !entryPoint_.empty()) {
        machine_.Show(entryPoint_);
    }
    entryPoint_.clear();
}

void FaultyVendor::Expect(std::string const& entryPoint) {
    counts_[entryPoint] = 0;
    library_.Result(entryPoint.c_str(), 0);
}

void FaultyVendor::Begin() {
    hits_ = 0;
    for (auto& [name, count] : counts_) {
        count = 0;
    }
}

int FaultyVendor::Answer(char const* entryPoint, int const* words) {
    library_.ClearCalls();
    int const before = counts_[entryPoint]++;
    bool const isMet = (entryPoint_ == kEveryEntryPoint || entryPoint == entryPoint_) &&
                       (calls_ == Calls::Every || (calls_ == Calls::First) == (before == 0));
    if (!isMet) {
        return AsHealthy(entryPoint, words);
    }
    ++hits_;
    return AsFaulty(entryPoint, words);
}

int FaultyVendor::AsHealthy(char const* entryPoint, int const* words) {
    std::string_view const name = entryPoint;
    if (name == "ADL2_Overdrive5_ThermalDevices_Enum" && words[2] >= thermalControllers_) {
        return -100;
    }
    if (name == "NvAPI_GetErrorMessage" && words[1] != 0) {
        std::snprintf(reinterpret_cast<char*>(Pointer(words[1])), 64, "NVAPI_%d", words[0]);
    }
    return library_.AsOrdered(entryPoint, words);
}

int FaultyVendor::AsFaulty(char const* entryPoint, int const* words) {
    static unsigned char foreign[kPromisedRecords * 1580];
    switch (fault_.kind) {
        case Kind::Code:
            return fault_.value;
        case Kind::CodeAndOutputs:
            AsHealthy(entryPoint, words);
            return fault_.value;
        case Kind::Silent:
            return 0;
        case Kind::NullList:
            HandOut(entryPoint, words, nullptr, kPromisedRecords);
            return 0;
        case Kind::ShortList: {
            void* const block = library_.AskForMemory(fault_.value);
            if (block != nullptr) {
                std::memset(block, 1, static_cast<std::size_t>(fault_.value));
            }
            HandOut(entryPoint, words, block, kPromisedRecords);
            return 0;
        }
        case Kind::ForeignList:
            HandOut(entryPoint, words, foreign, kPromisedRecords);
            return 0;
        case Kind::UnreadableList:
            HandOut(entryPoint, words, Pointer(0x10), kPromisedRecords);
            return 0;
        default:
            break;
    }
    int const result = AsHealthy(entryPoint, words);
    if (fault_.kind == Kind::Fill) {
        Fill(entryPoint, words);
    } else if (unsigned char* const place = PlaceOf(entryPoint, words, fault_)) {
        if (fault_.kind == Kind::Unterminated) {
            std::memset(place, 'A', static_cast<std::size_t>(fault_.size));
        } else {
            int const value = fault_.kind == Kind::Word ? fault_.value : IntAt(place) + fault_.value;
            std::memcpy(place, &value, sizeof value);
        }
    }
    return result;
}

// What is behind a list's address keeps its size; of handles, the first one.
void FaultyVendor::Fill(char const* entryPoint, int const* words) const {
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        if (words[output.argument] == 0) {
            continue;
        }
        unsigned char* place = Pointer(words[output.argument]);
        int const size = output.size == test::kSizeInRecord ? IntAt(place) : output.size;
        if (output.kind == VendorOutput::Kind::List) {
            place = ListAt(place);
        }
        if (place != nullptr && size > 0) {
            std::memset(place, fault_.value, static_cast<std::size_t>(size));
        }
    }
}

void FaultyVendor::HandOut(char const* entryPoint, int const* words, void* list, int count) const {
    if (VendorOutput const* const output = ListOf(entryPoint)) {
        std::memcpy(Pointer(words[output->argument - 1]), &count, sizeof count);
        std::memcpy(Pointer(words[output->argument]), &list, sizeof list);
    }
}

}  // namespace gputune::matrix
