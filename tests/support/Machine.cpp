#include "Machine.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace gputune::test {

Bytes Patched(Bytes bytes, std::size_t offset, Bytes const& patch) {
    bytes.resize(std::max(bytes.size(), offset + patch.size()));
    std::copy(patch.begin(), patch.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return bytes;
}

Bytes Text(std::string const& text) {
    auto const* const first = reinterpret_cast<unsigned char const*>(text.c_str());
    return {first, first + text.size() + 1};
}

int Call::Int(std::size_t offset) const {
    if (offset + sizeof(int) > record.size()) {
        throw std::out_of_range(entryPoint + " has no field at " + std::to_string(offset));
    }
    int value = 0;
    std::memcpy(&value, record.data() + offset, sizeof value);
    return value;
}

double Call::DoubleArgument(std::size_t word) const {
    if (sizeof(Word) == sizeof(double)) {
        return doubles.at(word);
    }
    if (word + 2 > args.size()) {
        throw std::out_of_range(entryPoint + " has no two words at " + std::to_string(word));
    }
    double value = 0;
    std::memcpy(&value, args.data() + word, sizeof value);
    return value;
}

Handle Call::HandleArgument(std::size_t argument) const {
    return Handle{static_cast<std::uintptr_t>(args.at(argument))};
}

void Call::CopyRecord(void* target, std::size_t size) const {
    if (size != record.size()) {
        throw std::length_error(entryPoint + " has a record of " + std::to_string(record.size()) + " bytes");
    }
    std::memcpy(target, record.data(), size);
}

namespace {

Call ToCall(ScriptedCall const& call) {
    return {call.entryPoint, std::vector<Word>(call.words, call.words + call.wordCount),
            std::vector<double>(std::begin(call.doubles), std::end(call.doubles)),
            Bytes(call.record, call.record + call.recordSize)};
}

int Size(Bytes const& bytes) {
    return static_cast<int>(bytes.size());
}

}  // namespace

Machine::Machine(Library library) {
    if (library != Library::None) {
        Add(library);
    }
}

Machine& Machine::Add(Library library) {
    libraries_.push_back(&host::InstallLibrary(library));
    libraries_.back()->Reset();
    return *this;
}

ScriptedLibrary& Machine::Scripted() const {
    return *libraries_.at(0);
}

ScriptedLibrary& Machine::LibraryOf(std::string const& entryPoint) const {
    std::string const name = entryPoint.substr(0, entryPoint.find('@'));
    for (ScriptedLibrary* const library : libraries_) {
        if (library->Has(name.c_str())) {
            return *library;
        }
    }
    throw std::invalid_argument("no library of the machine can have " + name);
}

Machine& Machine::Captions(std::vector<std::wstring> captions) {
    captions_ = std::move(captions);
    return *this;
}

Machine& Machine::Result(std::string const& entryPoint, int result) {
    LibraryOf(entryPoint).Result(entryPoint.c_str(), result);
    return *this;
}

Machine& Machine::Write(std::string const& entryPoint, int argument, Bytes const& bytes, int offset) {
    LibraryOf(entryPoint).Write(entryPoint.c_str(), argument, offset, bytes.data(), Size(bytes));
    return *this;
}

Machine& Machine::WriteThrough(std::string const& entryPoint, int argument, int pointerOffset, Bytes const& bytes) {
    LibraryOf(entryPoint).WriteThrough(entryPoint.c_str(), argument, pointerOffset, bytes.data(), Size(bytes));
    return *this;
}

Machine& Machine::Allocate(std::string const& entryPoint, int argument, Bytes const& list) {
    LibraryOf(entryPoint).Allocate(entryPoint.c_str(), argument, list.data(), Size(list));
    return *this;
}

Machine& Machine::Then(std::string const& entryPoint) {
    LibraryOf(entryPoint).Then(entryPoint.c_str());
    return *this;
}

Machine& Machine::Hide(std::string const& entryPoint) {
    LibraryOf(entryPoint).Hide(entryPoint.c_str());
    return *this;
}

Machine& Machine::Show(std::string const& entryPoint) {
    LibraryOf(entryPoint).Show(entryPoint.c_str());
    return *this;
}

Exports const& Machine::Api() {
    return host::LoadLibraryUnderTest();
}

void Machine::InstallCaptions() const {
    host::InstallCaptions(captions_);
}

bool Machine::Init(int logMode) {
    InstallCaptions();
    return Api().InitVGAHelper(logMode);
}

bool Machine::InitAndForget() {
    bool const ok = Init();
    TakeCalls();
    TakeLog();
    return ok;
}

Machine Machine::Started() {
    if (!InitAndForget()) {
        throw std::runtime_error("the library under test did not start");
    }
    return std::move(*this);
}

Lines Machine::TakeLog() {
    // Binary, to see the line ends as they are; the text mode of the file writes the system's own.
    std::ifstream file("debug.log", std::ios::binary);
    Lines lines;
    std::string line;
    for (std::size_t number = 0; std::getline(file, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (number >= linesTaken_) {
            lines.push_back(line);
        }
    }
    linesTaken_ += lines.size();
    return lines;
}

std::vector<Call> Machine::TakeCalls() {
    std::vector<Call> calls;
    for (ScriptedLibrary* const library : libraries_) {
        for (int index = 0; index < library->CallCount(); ++index) {
            calls.push_back(ToCall(library->CallAt(index)));
        }
        library->ClearCalls();
    }
    return calls;
}

Lines Machine::TakeTraffic(std::string (*describe)(Call const&)) {
    std::vector<Call> const calls = TakeCalls();
    Lines lines(calls.size());
    std::transform(calls.begin(), calls.end(), lines.begin(), describe);
    return lines;
}

Lines Machine::TakeCallNames() {
    return TakeTraffic([](Call const& call) { return call.entryPoint; });
}

std::vector<Call> Machine::CallsOf(std::string const& entryPoint) const {
    ScriptedLibrary const& library = LibraryOf(entryPoint);
    std::vector<Call> calls;
    for (int index = 0; index < library.CallCount(); ++index) {
        if (library.CallAt(index).entryPoint == entryPoint) {
            calls.push_back(ToCall(library.CallAt(index)));
        }
    }
    return calls;
}

Call Machine::LastCall(std::string const& entryPoint) const {
    std::vector<Call> const calls = CallsOf(entryPoint);
    if (calls.empty()) {
        throw std::runtime_error(entryPoint + " was not called");
    }
    return calls.back();
}

int Machine::CountOf(std::string const& entryPoint) const {
    return static_cast<int>(CallsOf(entryPoint).size());
}

std::vector<LibraryLoad> Machine::TakeLoads() {
    return std::exchange(host::Loads(), {});
}

int Machine::UnloadCount() const {
    return host::UnloadCount();
}

Machine& Machine::WriteProfile(std::string const& text) {
    std::filesystem::create_directories(host::ProfilePath().parent_path());
    std::ofstream(host::ProfilePath(), std::ios::binary) << text;
    return *this;
}

Machine& Machine::RemoveProfile() {
    std::filesystem::remove(host::ProfilePath());
    return *this;
}

Lines operator+(Lines first, Lines const& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string host::FileName(Machine::Library library) {
    switch (library) {
        case Machine::Library::AmdNewer:
            return "atiadlxx.dll";
        case Machine::Library::AmdOlder:
            return "atiadlxy.dll";
        case Machine::Library::Intel:
            return sizeof(void*) == 4 ? "ControlLib32.dll" : "ControlLib.dll";
        case Machine::Library::Nvidia:
            return sizeof(void*) == 4 ? "nvapi.dll" : "nvapi64.dll";
        case Machine::Library::None:
            break;
    }
    throw std::invalid_argument("no library has no name");
}

}  // namespace gputune::test
