#include "sim/state/state_image.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace gputune::sim {

namespace {

constexpr std::string_view kMark = "gputune board state\n";
constexpr std::uint32_t kVersion = 1;
constexpr std::size_t kHeader = 64;     // bytes
constexpr std::size_t kPlaceHead = 16;  // bytes: number, checksum
constexpr std::size_t kPlaces = 2;

struct Header {
    StateBytes mark = StateBytes(kMark.begin(), kMark.end());
    std::uint32_t version = kVersion;
    std::uint64_t board = 0;
    std::uint64_t size = 0;  // of a state

    template <class Archive>
    void Exchange(Archive& archive) {
        archive(mark, version, board, size);
    }
};

// Finds what an interrupted write leaves; it guards against nobody.
std::uint64_t Checksum(std::uint64_t number, unsigned char const* bytes, std::size_t size) {
    constexpr std::uint64_t kBasis = 0xCBF29CE484222325;
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t sum = (kBasis ^ number) * kPrime;
    for (std::size_t i = 0; i < size; ++i) {
        sum = (sum ^ bytes[i]) * kPrime;
    }
    return sum;
}

StateBytes PlaceOf(BoardState const& state) {
    StateWriter writer;
    std::uint64_t number = state.number;
    std::uint64_t checksum = Checksum(number, state.bytes.data(), state.bytes.size());
    writer(number, checksum);
    StateBytes place = writer.Result();
    place.insert(place.end(), state.bytes.begin(), state.bytes.end());
    return place;
}

// None when it was never written, or not to its end.
std::optional<BoardState> ReadPlace(StateBytes const& file, std::size_t offset, std::size_t size) {
    if (offset > file.size() || file.size() - offset < kPlaceHead + size) {
        return std::nullopt;
    }
    auto const begin = file.begin() + static_cast<std::ptrdiff_t>(offset);
    StateBytes const place(begin, begin + static_cast<std::ptrdiff_t>(kPlaceHead + size));
    StateReader reader(place);
    std::uint64_t number = 0;
    std::uint64_t checksum = 0;
    reader(number, checksum);
    if (checksum != Checksum(number, place.data() + kPlaceHead, size)) {
        return std::nullopt;
    }
    return BoardState{.number = number, .bytes = StateBytes(place.begin() + kPlaceHead, place.end())};
}

}  // namespace

StateBytes NewStateImage(std::uint64_t board, StateBytes const& state) {
    Header header;
    header.board = board;
    header.size = state.size();
    StateWriter writer;
    writer(header);
    StateBytes file = writer.Result();
    file.resize(kHeader);
    StateBytes const place = PlaceOf({.number = 0, .bytes = state});
    file.insert(file.end(), place.begin(), place.end());
    return file;
}

BoardState NewestState(StateBytes const& file, std::uint64_t board) {
    Header header;
    if (file.size() < kHeader || !std::equal(header.mark.begin(), header.mark.end(), file.begin())) {
        throw StateError("it is no board's state");
    }
    StateReader reader(file);
    reader(header);
    if (header.version != kVersion) {
        throw StateError("it has the format " + std::to_string(header.version) + ", and this is " +
                         std::to_string(kVersion));
    }
    if (header.board != board) {
        throw StateError("it is the state of another board file, or of this one before it was changed");
    }
    std::optional<BoardState> newest;
    for (std::size_t i = 0; i < kPlaces && header.size <= file.size(); ++i) {
        auto const size = static_cast<std::size_t>(header.size);
        auto state = ReadPlace(file, kHeader + i * (kPlaceHead + size), size);
        if (state && (!newest || state->number > newest->number)) {
            newest = std::move(state);
        }
    }
    if (!newest) {
        throw StateError("it is damaged");
    }
    return *std::move(newest);
}

StatePart PartOf(BoardState const& state) {
    StateBytes place = PlaceOf(state);
    auto const index = static_cast<std::size_t>(state.number % kPlaces);
    std::size_t const offset = kHeader + index * place.size();
    return {.offset = offset, .bytes = std::move(place)};
}

}  // namespace gputune::sim
