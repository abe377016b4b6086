#include "tool/values/Quoted.h"

#include <cstddef>
#include <cstdint>

namespace gputune::tool {

namespace {

unsigned Byte(std::string_view text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

// The number of bytes of the text's first character; 0 when it is not printable.
std::size_t CharacterSize(std::string_view text) {
    unsigned const first = Byte(text, 0);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    }
    std::size_t const size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < size) {
        return 0;
    }
    std::uint32_t code = first & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((Byte(text, i) & 0xC0U) != 0x80U) {
            return 0;
        }
        code = code << 6U | (Byte(text, i) & 0x3FU);
    }
    bool const isControl = code < 0xA0;
    bool const isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    bool const isOverlong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    return isControl || isSurrogate || isOverlong || code > 0x10FFFF ? 0 : size;
}

// Removes the first character from the text and returns it in printable form.
std::string TakeCharacter(std::string_view& text) {
    std::size_t const size = CharacterSize(text);
    std::string shown(text.substr(0, size));
    if (size == 0) {
        constexpr char const* kDigits = "0123456789ABCDEF";
        shown = std::string("\\x") + kDigits[Byte(text, 0) >> 4U] + kDigits[Byte(text, 0) & 0xFU];
    }
    text.remove_prefix(size == 0 ? 1 : size);
    return shown;
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        printable += TakeCharacter(text);
    }
    return printable;
}

std::string Quoted(std::string_view text) {
    constexpr int kLongest = 40;
    std::string quoted = "\"";
    for (int count = 0; count < kLongest && !text.empty(); ++count) {
        quoted += TakeCharacter(text);
    }
    return quoted + (text.empty() ? "\"" : "...\"");
}

}  // namespace gputune::tool
