// Board identifiers. Compares the conversion of hexadecimal numbers with the standard library's, and the number that
// the library finds in a device identifier, which may have no terminator, with the expected one.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>

#include "amd/OD8Helper.h"
#include "boards.h"
#include "log/DebugLog.h"
#include "machine_native.h"
#include "records/hex_long.h"
#include "require.h"

namespace {

using namespace gputune;
using fuzz::Require;

static_assert(sizeof(long) == 4, "the standard conversion is of the same width only in 32-bit programs");

constexpr char kNoNumber[] = "invalid stol argument";
constexpr char kTooLarge[] = "stol argument out of range";

// The result of a conversion: a number, or the text of the error.
struct Conversion {
    std::optional<long> number;
    std::string error;
};

Conversion Convert(std::string const& text) {
    try {
        return {ParseHexLong(text), ""};
    } catch (HexLongError const& error) {
        return {std::nullopt, error.what()};
    }
}

// The result of the C library. It reads "0x" without a digit behind it as 0; the library finds no number there.
Conversion Expected(std::string const& text) {
    char* end = nullptr;
    errno = 0;
    long const number = std::strtol(text.c_str(), &end, 16);
    bool const isLonePrefix = end != text.c_str() && end[-1] == '0' && (*end == 'x' || *end == 'X') &&
                              !std::any_of(text.c_str(), static_cast<char const*>(end - 1),
                                           [](char character) { return std::isxdigit(character) != 0; });
    if (end == text.c_str() || isLonePrefix) {
        return {std::nullopt, kNoNumber};
    }
    return errno == ERANGE ? Conversion{std::nullopt, kTooLarge} : Conversion{number, ""};
}

void RequireSameNumber(std::string const& text) {
    Conversion const converted = Convert(text);
    Conversion const expected = Expected(text);
    Require(converted.number == expected.number && converted.error == expected.error, "the standard conversion agrees");
}

// The identity of the one adapter of a board whose list holds these 256 bytes as device identifier.
struct Identity {
    std::uint32_t subsystemId;
    std::string error;
};

Identity Identify(std::string const& udid) {
    test::Machine machine(test::Machine::Library::AmdNewer);
    test::OrderAdapters(machine, {{.udid = udid, .name = udid}});  // a name without an end, too
    amd::ADL adl;
    Require(adl.IsValid(), "the binding opens");
    amd::OD8Helper adapter(adl);

    VgaInfo info;
    std::memset(&info, 0xEE, sizeof(info));
    Identity identity{0, ""};
    try {
        adapter.GetVGAInfo(info);
    } catch (HexLongError const& error) {
        identity.error = error.what();
    }
    identity.subsystemId = info.SubsystemId;

    std::string const name(udid.c_str(), std::min<std::size_t>(std::strlen(udid.c_str()), 255));
    Require(std::memchr(info.AdapterName, 0, sizeof(info.AdapterName)) != nullptr, "the name has an end");
    Require(info.AdapterName == name, "the name is the list's");
    Require(info.BusNumber == 3, "the bus is the list's");
    return identity;
}

// What the public header promises of SubsystemId.
Identity Promised(std::string const& udid) {
    std::string const text = udid.c_str();
    std::size_t const marker = text.find("&SUBSYS_");
    if (marker == std::string::npos || text.size() < marker + 16) {
        return {0, ""};
    }
    Conversion const number = Expected("0x" + text.substr(marker + 8, 8));
    return {static_cast<std::uint32_t>(number.number.value_or(0)), number.error};
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    unlink("debug.log");
    Require(symlink("/dev/null", "debug.log") == 0, "the log goes nowhere");
    log::DebugLog::Get(GPUTUNE_LOG_FILE);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(data, data + size);
    RequireSameNumber(text);
    // The copy in the list has 256 bytes, with or without a terminator among them.
    std::string udid = text;
    udid.resize(256, '\0');
    Identity const found = Identify(udid);
    Identity const promised = Promised(udid);
    Require(found.subsystemId == promised.subsystemId && found.error == promised.error,
            "the identifier is as promised");
    test::ForgetMachine();
    return 0;
}
