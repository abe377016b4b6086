#include "faults.h"

#include <algorithm>
#include <climits>
#include <sstream>

#include "ScriptedCore.h"
#include "vendor_outputs.h"

namespace gputune::matrix {

namespace {

using Kind = Fault::Kind;
using test::VendorOutput;

template <class... Parts>
std::string Text(Parts const&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

constexpr int kFillings[] = {0x00, 0x01, 0x41, 0x7F, 0x80, 0xFF};

void AddCodes(std::vector<Fault>& faults, char const* entryPoint) {
    for (int const code : test::FailureCodes(entryPoint)) {
        faults.push_back({.kind = Kind::Code, .value = code});
    }
    faults.push_back({.kind = Kind::CodeAndOutputs, .value = -1});
    faults.push_back({.kind = Kind::CodeAndOutputs, .value = 1});
}

// The numbers in the first so many bytes of a record are set, each in turn. Behind them, large records repeat
// themselves.
constexpr int kSwept = 320;
// The size of a record that tells its own size, with three performance levels.
constexpr int kSizeOfLevels = 60;

void AddWords(std::vector<Fault>& faults, VendorOutput const& output) {
    int const size = output.size == test::kSizeInRecord ? kSizeOfLevels : output.size;
    for (int offset = 0; offset + 4 <= std::min(size, kSwept); offset += 4) {
        for (int const value : {INT_MIN, INT_MAX}) {
            faults.push_back({.kind = Kind::Word, .value = value, .argument = output.argument, .offset = offset});
        }
    }
}

void AddLists(std::vector<Fault>& faults, VendorOutput const& output) {
    faults.push_back({.kind = Kind::NullList});
    for (int const size : {0, 1, output.size - 1, output.size, 2 * output.size + 3}) {
        faults.push_back({.kind = Kind::ShortList, .value = size});
    }
    faults.push_back({.kind = Kind::ForeignList});
#if defined(_WIN32)  // natively platform::ReadableBytes does not know what can be read
    faults.push_back({.kind = Kind::UnreadableList});
#endif
}

}  // namespace

std::vector<Fault> FaultsOf(std::string const& entryPoint) {
    std::vector<Fault> faults{{.kind = Kind::Missing}};
    char const* const name = entryPoint.c_str();
    if (entryPoint == "nvapi_QueryInterface") {
        return faults;  // it returns an address, and writes nothing
    }
    AddCodes(faults, name);
    auto const& outputs = test::VendorOutputs(name);
    if (outputs.empty()) {
        return faults;
    }
    faults.push_back({.kind = Kind::Silent});
    for (int const byte : kFillings) {
        faults.push_back({.kind = Kind::Fill, .value = byte});
    }
    for (auto const& count : test::VendorCounts(name)) {
        for (int const value : {0, -1, 64, 65, 1024, 1025, 100000}) {
            faults.push_back({.kind = Kind::Word, .value = value, .argument = count.argument, .offset = count.offset});
        }
        for (int const value : {-1, 1}) {
            faults.push_back({.kind = Kind::OffBy, .value = value, .argument = count.argument, .offset = count.offset});
        }
    }
    for (auto const& text : test::VendorTexts(name)) {
        faults.push_back(
            {.kind = Kind::Unterminated, .argument = text.argument, .offset = text.offset, .size = text.size});
    }
    for (VendorOutput const& output : outputs) {
        AddWords(faults, output);
        if (output.kind == VendorOutput::Kind::List) {
            AddLists(faults, output);
        }
    }
    return faults;
}

std::vector<Fault> FaultsOfEverything() {
    std::vector<Fault> faults{{.kind = Kind::Silent}};
    for (int const code : {-1, 1}) {
        faults.push_back({.kind = Kind::Code, .value = code});
        faults.push_back({.kind = Kind::CodeAndOutputs, .value = code});
    }
    for (int const byte : kFillings) {
        faults.push_back({.kind = Kind::Fill, .value = byte});
    }
    return faults;
}

std::string NameOf(Fault const& fault) {
    switch (fault.kind) {
        case Kind::Missing:
            return "missing";
        case Kind::Code:
            return Text("returns ", fault.value);
        case Kind::CodeAndOutputs:
            return Text("returns ", fault.value, " with outputs");
        case Kind::Silent:
            return "writes nothing";
        case Kind::Fill:
            return Text("filled with ", fault.value);
        case Kind::Word:
            return Text(fault.argument, ":", fault.offset, " is ", fault.value);
        case Kind::OffBy:
            return Text(fault.argument, ":", fault.offset, " off by ", fault.value);
        case Kind::Unterminated:
            return Text(fault.argument, ":", fault.offset, " has no end");
        case Kind::NullList:
            return "null list";
        case Kind::ShortList:
            return Text("list of ", fault.value, " bytes");
        case Kind::ForeignList:
            return "foreign list";
        case Kind::UnreadableList:
            return "unreadable list";
        case Kind::NoMemory:
            return Text("none in allocation ", fault.value);
        case Kind::NoMoreMemory:
            return Text("none from allocation ", fault.value, " on");
    }
    return "";
}

std::string NameOf(Calls calls) {
    return calls == Calls::Every ? "every call" : calls == Calls::First ? "first call" : "later calls";
}

}  // namespace gputune::matrix
