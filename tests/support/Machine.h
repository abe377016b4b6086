// The simulated machine that a test runs on: the display controllers that WMI reports, the vendors' libraries with what
// they answer, and the library under test. Every test runs in a process and an empty working directory of its own, and
// has one machine.
//
//     Machine machine = OverdriveNBoard();                       // boards.h
//     machine.Result("ADL2_OverdriveN_PowerLimit_Set", -1);
//     ASSERT_TRUE(machine.Init());
//     EXPECT_FALSE(machine.Api().SetPowerLimit(75, 0));
//     EXPECT_EQ(machine.TakeLog(), Lines({"..."}));
//
// The same tests run against the real gputune.dll under Wine (machine_windows.cpp), and natively with the library's
// code compiled in, under sanitizers (machine_native.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include "ScriptedLibrary.h"
#include "gputune.h"

namespace gputune::test {

using Bytes = std::vector<unsigned char>;
using Lines = std::vector<std::string>;

// The bytes of 32-bit integers, or of doubles, in a row.
Bytes Ints(std::initializer_list<int> values);
Bytes Ints(std::vector<int> const& values);
Bytes Doubles(std::vector<double> const& values);

// `bytes` with `patch` written over it from `offset` on, longer if `patch` reaches behind its end.
Bytes Patched(Bytes bytes, std::size_t offset, Bytes const& patch);

// The characters of a text and its terminator.
Bytes Text(std::string const& text);

// A call of a vendor's library.
struct Call {
    std::string entryPoint;
    std::vector<int> args;  // 32-bit words; pointers as numbers
    Bytes record;           // as the caller passed it in; empty when the entry point takes none

    int Int(std::size_t offset) const;              // of the record
    double DoubleArgument(std::size_t word) const;  // an argument of two words
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

    // Init, and drop its calls and its log.
    bool InitAndForget();

    // The lines of debug.log that no earlier TakeLog has returned.
    Lines TakeLog();

    // The calls that no earlier TakeCalls has returned, oldest first, of one library after the other; of one entry
    // point, the last.
    std::vector<Call> TakeCalls();
    std::vector<std::string> TakeCallNames();
    Call LastCall(std::string const& entryPoint) const;
    int CountOf(std::string const& entryPoint) const;

    // The loads that no earlier TakeLoads has returned; and how many of all loaded libraries were unloaded.
    std::vector<LibraryLoad> TakeLoads();
    int UnloadCount() const;

    // Writes the profile file where the library under test looks for it, or removes it. Under Windows all tests of a
    // program share that place: only for tests in acceptance/profile/, which run one after the other.
    void WriteProfile(std::string const& text);
    void RemoveProfile();

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

template <class... Args>
int Machine::Ctl(std::string const& name, Args... args) {
    return reinterpret_cast<int (*)(Args...)>(host::FindExport(name))(args...);
}

}  // namespace gputune::test
