#include "Machine.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace gputune::test {

Bytes Ints(std::vector<int> const& values) {
    Bytes bytes(values.size() * sizeof(int));
    if (!values.empty()) {
        std::memcpy(bytes.data(), values.data(), bytes.size());
    }
    return bytes;
}

Bytes Ints(std::initializer_list<int> values) {
    return Ints(std::vector<int>(values));
}

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

namespace {

Call ToCall(int index) {
    ScriptedCall call;
    host::Adl().GetCall(index, &call);
    return {call.entryPoint, std::vector<int>(call.args, call.args + call.argCount),
            Bytes(call.record, call.record + call.recordSize)};
}

int Size(Bytes const& bytes) {
    return static_cast<int>(bytes.size());
}

}  // namespace

Machine::Machine(AmdLibrary library) : library_(library) {
    host::InstallLibrary(library);
    if (library_ != AmdLibrary::None) {
        host::Adl().Reset();
    }
}

Machine& Machine::Captions(std::vector<std::wstring> captions) {
    captions_ = std::move(captions);
    return *this;
}

Machine& Machine::Result(std::string const& entryPoint, int result) {
    host::Adl().Result(entryPoint.c_str(), result);
    return *this;
}

Machine& Machine::Write(std::string const& entryPoint, int argument, Bytes const& bytes, int offset) {
    host::Adl().Write(entryPoint.c_str(), argument, offset, bytes.data(), Size(bytes));
    return *this;
}

Machine& Machine::Allocate(std::string const& entryPoint, int argument, Bytes const& list) {
    host::Adl().Allocate(entryPoint.c_str(), argument, list.data(), Size(list));
    return *this;
}

Machine& Machine::Then(std::string const& entryPoint) {
    host::Adl().Then(entryPoint.c_str());
    return *this;
}

Machine& Machine::Hide(std::string const& entryPoint) {
    host::Adl().Hide(entryPoint.c_str());
    return *this;
}

Exports const& Machine::Api() {
    return host::LoadLibraryUnderTest();
}

bool Machine::Init(int logMode) {
    host::InstallCaptions(captions_);
    return Api().InitVGAHelper(logMode);
}

bool Machine::InitAndForget() {
    bool const ok = Init();
    TakeCalls();
    TakeLog();
    return ok;
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
    if (library_ == AmdLibrary::None) {
        return calls;
    }
    for (int index = 0; index < host::Adl().CallCount(); ++index) {
        calls.push_back(ToCall(index));
    }
    host::Adl().ClearCalls();
    return calls;
}

std::vector<std::string> Machine::TakeCallNames() {
    std::vector<std::string> names;
    for (Call const& call : TakeCalls()) {
        names.push_back(call.entryPoint);
    }
    return names;
}

Call Machine::LastCall(std::string const& entryPoint) const {
    for (int index = host::Adl().CallCount(); index-- > 0;) {
        Call call = ToCall(index);
        if (call.entryPoint == entryPoint) {
            return call;
        }
    }
    throw std::runtime_error(entryPoint + " was not called");
}

int Machine::CountOf(std::string const& entryPoint) const {
    int count = 0;
    for (int index = 0; index < host::Adl().CallCount(); ++index) {
        count += ToCall(index).entryPoint == entryPoint ? 1 : 0;
    }
    return count;
}

void Machine::WriteProfile(std::string const& text) {
    std::filesystem::create_directories(host::ProfilePath().parent_path());
    std::ofstream(host::ProfilePath(), std::ios::binary) << text;
}

void Machine::RemoveProfile() {
    std::filesystem::remove(host::ProfilePath());
}

}  // namespace gputune::test
