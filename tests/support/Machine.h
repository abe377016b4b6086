// The simulated machine that a test runs on: the display controllers that WMI reports, the vendors' libraries with what
// they answer, and the library under test. Every test runs in a process and an empty working directory of its own, and
// has one machine.
//
//     Machine machine = OverdriveNBoard().Started();              // boards.h
//     machine.Reports(PowerLimits{.power = 12, .temperature = 80});
//     EXPECT_TRUE(machine.Api().SetPowerLimit(75, 0));
//     EXPECT_EQ(machine.Sent<PowerLimits>(), (PowerLimits{.mode = kModeManual, .power = 0, .temperature = 75}));
//     EXPECT_EQ(machine.TakeLog(), Lines({"..."}));
//
// The records that cross, such as PowerLimits, are in the headers of the vendors' boards. Orders of plain bytes (Write
// and the like) are for these headers, and for tests of a layout itself.
//
// The same tests run against the real gputune.dll under Wine (machine_windows.cpp), and natively with the library's
// code compiled in, under sanitizers (machine_native.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "ScriptedLibrary.h"
#include "gputune.h"

namespace gputune::test {

using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// The bytes of a record whose fields lie as its vendor publishes them, and of several in a row.
template <class Record>
Bytes BytesOf(Record const& record) {
    static_assert(std::is_trivially_copyable_v<Record>);
    auto const* const first = reinterpret_cast<unsigned char const*>(&record);
    return {first, first + sizeof record};
}
template <class Record>
Bytes BytesOf(std::vector<Record> const& records) {
    static_assert(std::is_trivially_copyable_v<Record>);
    auto const* const first = reinterpret_cast<unsigned char const*>(records.data());
    return {first, first + records.size() * sizeof(Record)};
}
inline Bytes Ints(std::vector<int> const& values) {
    return BytesOf(values);
}

// `bytes` with `patch` written over it from `offset` on, longer if `patch` reaches behind its end.
Bytes Patched(Bytes bytes, std::size_t offset, Bytes const& patch);

// The characters of a text and its terminator.
Bytes Text(std::string const& text);

// A call of a vendor's library.
struct Call {
    std::string entryPoint;
    std::vector<Word> args;
    std::vector<double> doubles;  // the registers of a 64-bit call
    Bytes record;                 // as the caller passed it in; empty when the entry point takes none

    int Int(std::size_t offset) const;              // of the record
    double DoubleArgument(std::size_t word) const;  // an argument of two words
    Handle HandleArgument(std::size_t argument) const;

    // The whole record, which must have the size of this type.
    template <class Record>
    Record As() const {
        if constexpr (requires { Record::From(*this); }) {
            return Record::From(*this);
        } else {
            Record value;
            CopyRecord(&value, sizeof value);
            return value;
        }
    }

private:
    void CopyRecord(void* target, std::size_t size) const;
};

// Where a type of record crosses: the entry point, the argument that points to it, and where in it the library writes.
// A record that a library reports has one as kReadBy; one that it is sent has the entry point as kSentBy.
struct Place {
    char const* entryPoint;
    int argument;
    int offset = 0;
};

// A LoadLibraryEx call of the library under test.
struct LibraryLoad {
    std::wstring path;
    std::uint32_t flags;
};

// The flat exports of the library under test.
struct Exports {
#define FLAT_FUNCTION(result, name, ...) decltype(&::name) name;
#include "api/flat_functions.inc"
};

class Machine {
public:
    enum class Library {
        None,
        AmdNewer,  // "atiadlxx.dll"
        AmdOlder,  // "atiadlxy.dll"
        Intel,     // "ControlLib32.dll"
        Nvidia,    // "nvapi.dll"
    };

    // A machine without display controllers and with this library, which returns 0 from every call and writes nothing.
    explicit Machine(Library library = Library::AmdNewer);
    Machine(Machine&&) noexcept = default;

    // Adds one more library, for a machine with boards of several vendors.
    Machine& Add(Library library);

    Machine& Captions(std::vector<std::wstring> captions);

    // What the vendor's library reports in its newest response, and the records that it was sent: the last one, or all
    // that no TakeCalls has returned. Asked is what stood in the record of the last call that reads one.
    template <class Record>
    Machine& Reports(Record const& record) {
        return Write(Record::kReadBy.entryPoint, Record::kReadBy.argument, BytesOf(record), Record::kReadBy.offset);
    }
    template <class Record>
    Record Sent() const {
        return LastCall(Record::kSentBy).template As<Record>();
    }
    template <class Record>
    std::vector<Record> AllSent() const {
        std::vector<Record> sent;
        for (Call const& call : CallsOf(Record::kSentBy)) {
            sent.push_back(call.As<Record>());
        }
        return sent;
    }
    template <class Record>
    Record Asked() const {
        return LastCall(Record::kReadBy.entryPoint).template As<Record>();
    }

    // Orders what an entry point of a vendor's library does: see ScriptedLibrary.h.
    Machine& Result(std::string const& entryPoint, int result);
    Machine& Write(std::string const& entryPoint, int argument, Bytes const& bytes, int offset = 0);
    Machine& WriteThrough(std::string const& entryPoint, int argument, int pointerOffset, Bytes const& bytes);
    Machine& Allocate(std::string const& entryPoint, int argument, Bytes const& list);
    Machine& Then(std::string const& entryPoint);
    Machine& Hide(std::string const& entryPoint);
    Machine& Show(std::string const& entryPoint);

    // The library that the machine was made with.
    ScriptedLibrary& Scripted() const;

    // Loads the library under test if necessary, without initialising it.
    Exports const& Api();

    // Calls one of the Intel control library's functions that the library under test exports.
    template <class... Args>
    int Ctl(std::string const& name, Args... args);

    // Lets WMI report the display controllers of Captions, as Init does.
    void InstallCaptions() const;

    // InitVGAHelper with this log mode; by default the log is the file that TakeLog reads.
    bool Init(int logMode = GPUTUNE_LOG_FILE);

    // Init, and drop its calls and its log. Started hands the machine on; it throws when Init fails.
    bool InitAndForget();
    Machine Started();

    // The lines of debug.log that no earlier TakeLog has returned.
    Lines TakeLog();

    // The calls that no earlier TakeCalls has returned, oldest first, of one library after the other; of one entry
    // point, the last.
    std::vector<Call> TakeCalls();
    Lines TakeTraffic(std::string (*describe)(Call const&));
    Lines TakeCallNames();
    std::vector<Call> CallsOf(std::string const& entryPoint) const;
    Call LastCall(std::string const& entryPoint) const;
    int CountOf(std::string const& entryPoint) const;

    // The loads that no earlier TakeLoads has returned; and how many of all loaded libraries were unloaded.
    std::vector<LibraryLoad> TakeLoads();
    int UnloadCount() const;

    // Writes the profile file where the library under test looks for it, or removes it. Under Windows all tests of a
    // program share that place: only for tests in acceptance/profile/, which run one after the other.
    Machine& WriteProfile(std::string const& text);
    Machine& RemoveProfile();

private:
    ScriptedLibrary& LibraryOf(std::string const& entryPoint) const;

    std::vector<ScriptedLibrary*> libraries_;
    std::vector<std::wstring> captions_;
    std::size_t linesTaken_ = 0;
};

// What machine_native.cpp and machine_windows.cpp each implement, and FileName.
namespace host {

void InstallCaptions(std::vector<std::wstring> const& captions);
// Puts the library where the library under test finds it.
ScriptedLibrary& InstallLibrary(Machine::Library library);
std::string FileName(Machine::Library library);
Exports const& LoadLibraryUnderTest();
void* FindExport(std::string const& name);
std::vector<LibraryLoad>& Loads();
int UnloadCount();
std::filesystem::path ProfilePath();

}  // namespace host

// One line after the other.
Lines operator+(Lines first, Lines const& second);

// Records of 32-bit integers read well where a test fails.
template <class Record>
requires(
    requires { Record::kReadBy; } || requires { Record::kSentBy; }) &&
    std::is_trivially_copyable_v<Record> void PrintTo(Record const& record, std::ostream* out) {
    Call const call{.entryPoint = "", .args = {}, .doubles = {}, .record = BytesOf(record)};
    for (std::size_t offset = 0; offset < sizeof record; offset += sizeof(int)) {
        *out << (offset == 0 ? "{" : ", ") << call.Int(offset);
    }
    *out << "}";
}

template <class... Args>
int Machine::Ctl(std::string const& name, Args... args) {
    return reinterpret_cast<int (*)(Args...)>(host::FindExport(name))(args...);
}

}  // namespace gputune::test
