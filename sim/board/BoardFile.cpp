#include "sim/board/BoardFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "sim/board/board_readers.h"

namespace gputune::sim {

namespace {

constexpr int kFormat = 1;
constexpr std::size_t kTextBytes = 4096;

// FNV-1a.
std::uint64_t IdentityOf(std::string const& text) {
    constexpr std::uint64_t kBasis = 0xCBF29CE484222325;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t identity = kBasis;
    for (char const c : text) {
        identity = (identity ^ static_cast<unsigned char>(c)) * kPrime;
    }
    return identity;
}

}  // namespace

Board ReadBoardText(std::string const& json, std::string const& source) {
    nlohmann::json const document = ParseJson(json, source);
    JsonObject object(JsonValue(document, "", source));
    object.Required("format").Int(kFormat, kFormat);
    Board board;
    board.identity = IdentityOf(json);
    object.ReadWith("description", board.description, [](JsonValue const& text) { return text.String(kTextBytes); });
    board.captions = object.Required("captions").List([](JsonValue const& caption) {
        return caption.IsNull() ? std::nullopt : std::optional(caption.String(kTextBytes));
    });
    // Every vendor has a reader of its own for the rest of the file.
    switch (object.Required("vendor").Choice({"none", "amd", "intel", "nvidia"})) {
        case 0:
            board.vendor = Vendor::None;
            break;
        case 1:
            board.vendor = Vendor::Amd;
            ReadAmd(object, board);
            break;
        case 2:
            board.vendor = Vendor::Intel;
            ReadIntel(object, board);
            break;
        case 3:
            board.vendor = Vendor::Nvidia;
            ReadNvidia(object, board);
            break;
    }
    object.Finish();
    return board;
}

Board ReadBoardFile(std::string const& path) {
    std::ifstream file(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    if (!file) {
        throw BoardFileError(path + ": cannot be opened");
    }
    std::string const text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad()) {
        throw BoardFileError(path + ": cannot be read");
    }
    return ReadBoardText(text, path);
}

}  // namespace gputune::sim
