#include "FaultyVendor.h"

#include <cstring>

#include "ScriptedCore.h"
#include "vendor_outputs.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::VendorOutput;

unsigned char* Pointer(test::Word word) {
    return reinterpret_cast<unsigned char*>(word);
}

int IntAt(unsigned char const* place) {
    int value = 0;
    std::memcpy(&value, place, sizeof value);
    return value;
}

unsigned char* PointerAt(void const* place) {
    unsigned char* pointer = nullptr;
    std::memcpy(&pointer, place, sizeof pointer);
    return pointer;
}

VendorOutput const* ListOf(char const* entryPoint) {
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        if (output.kind == VendorOutput::Kind::List) {
            return &output;
        }
    }
    return nullptr;
}

// Where a faulty number or text stands: in what the argument points to; of a list, in its block. Null when the client
// passes a null pointer.
unsigned char* PlaceOf(char const* entryPoint, test::Word const* words, Fault const& fault) {
    if (words[fault.argument] == 0) {
        return nullptr;
    }
    unsigned char* place = Pointer(words[fault.argument]);
    VendorOutput const* const list = ListOf(entryPoint);
    if (list != nullptr && list->argument == fault.argument) {
        place = PointerAt(place);
    }
    return place == nullptr ? nullptr : place + fault.offset;
}

}  // namespace

FaultyVendor::FaultyVendor(test::Machine& machine, int thermalControllers)
    : machine_(machine), library_(machine.Scripted()), thermalControllers_(thermalControllers) {
    library_.AnswerBy(this);
}

FaultyVendor::~FaultyVendor() {
    library_.AnswerBy(nullptr);
}

void FaultyVendor::PutFault(std::string const& entryPoint, Fault const& fault, Calls calls) {
    entryPoint_ = entryPoint;
    fault_ = fault;
    calls_ = calls;
    if (fault.kind == Kind::Missing) {
        machine_.Hide(entryPoint);
        origins_.Missing(entryPoint);
    }
}

void FaultyVendor::RemoveFault() {
    if (fault_.kind == Kind::Missing && !entryPoint_.empty()) {
        machine_.Show(entryPoint_);
    }
    entryPoint_.clear();
}

void FaultyVendor::PrepareForCalls(std::map<std::string, int> const& calls) {
    for (auto const& [entryPoint, count] : calls) {
        counts_[entryPoint] = 0;
        library_.Result(entryPoint.c_str(), 0);
    }
}

void FaultyVendor::BeginStep(Step const& step) {
    origins_.Begin(step);
    hits_ = 0;
    for (auto& [name, count] : counts_) {
        count = 0;
    }
}

int FaultyVendor::Answer(char const* entryPoint, test::Word const* words) {
    library_.ClearCalls();
    int const before = counts_[entryPoint]++;
    bool const isFaulty = (entryPoint_ == kEveryEntryPoint || entryPoint == entryPoint_) &&
                          (calls_ == Calls::Every || (calls_ == Calls::First) == (before == 0));
    origins_.Called(entryPoint, words);
    listBytes_ = 0;
    hits_ += isFaulty ? 1 : 0;
    int const result = isFaulty ? AsFaulty(entryPoint, words) : AsHealthy(entryPoint, words);
    if (result == 0) {
        origins_.Succeeded(entryPoint, words, listBytes_);
    }
    return result;
}

int FaultyVendor::AsHealthy(char const* entryPoint, test::Word const* words) {
    std::string_view const name = entryPoint;
    if (name == "ADL2_Overdrive5_ThermalDevices_Enum" && words[2] >= thermalControllers_) {
        return -100;
    }
    if (name == "NvAPI_GetErrorMessage" && words[1] != 0) {
        std::snprintf(reinterpret_cast<char*>(Pointer(words[1])), 64, "NVAPI_%d", static_cast<int>(words[0]));
    }
    int const result = library_.AsOrdered(entryPoint, words);
    VendorOutput const* const list = ListOf(entryPoint);
    if (list != nullptr && PointerAt(Pointer(words[list->argument])) != nullptr) {
        listBytes_ = IntAt(Pointer(words[list->argument - 1])) * list->size;  // a healthy list is as long as it says
    }
    return result;
}

int FaultyVendor::AsFaulty(char const* entryPoint, test::Word const* words) {
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
            HandOut(entryPoint, words, nullptr, 0);
            return 0;
        case Kind::ShortList: {
            void* const block = library_.AskForMemory(fault_.value);
            if (block != nullptr) {
                std::memset(block, 1, static_cast<std::size_t>(fault_.value));
            }
            HandOut(entryPoint, words, block, fault_.value);
            return 0;
        }
        case Kind::ForeignList:
            HandOut(entryPoint, words, foreign, sizeof foreign);
            return 0;
        case Kind::UnreadableList:
            HandOut(entryPoint, words, Pointer(0x10), 0);
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

// A list's address stays, and its first record is filled; of handles, the first one is.
void FaultyVendor::Fill(char const* entryPoint, test::Word const* words) const {
    for (VendorOutput const& output : test::VendorOutputs(entryPoint)) {
        if (words[output.argument] == 0) {
            continue;
        }
        unsigned char* place = Pointer(words[output.argument]);
        int const size = output.size == test::kSizeInRecord ? IntAt(place) : output.size;
        if (output.kind == VendorOutput::Kind::List) {
            place = PointerAt(place);
        }
        if (place != nullptr && size > 0) {
            std::memset(place, fault_.value, static_cast<std::size_t>(size));
        }
    }
}

void FaultyVendor::HandOut(char const* entryPoint, test::Word const* words, void* list, int bytes) {
    listBytes_ = bytes;
    if (VendorOutput const* const output = ListOf(entryPoint)) {
        std::memcpy(Pointer(words[output->argument - 1]), &kPromisedRecords, sizeof kPromisedRecords);
        std::memcpy(Pointer(words[output->argument]), &list, sizeof list);
    }
}

}  // namespace gputune::matrix
