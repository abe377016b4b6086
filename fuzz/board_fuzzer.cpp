// Gives arbitrary text to the reader of board files. It must return a board or throw an error that names the file.
#include <cstdint>
#include <string>

#include "require.h"
#include "sim/board/BoardFile.h"

namespace {

using gputune::fuzz::Require;

constexpr char kSource[] = "fuzzed.json";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string const text(data, data + size);
    try {
        gputune::sim::Board const board = gputune::sim::ReadBoardText(text, kSource);
        Require(board.amd.adapters.size() <= text.size(), "a board is no larger than its text");
    } catch (gputune::sim::BoardFileError const& error) {
        std::string const message = error.what();
        Require(message.starts_with(kSource) && message.size() > sizeof(kSource), "an error names the file");
    }
    return 0;
}
