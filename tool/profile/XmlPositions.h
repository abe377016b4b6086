// Where the elements and attributes of an XML text stand, which the XML parser itself tells by line only; and where and
// why the parser will refuse the text. Pure.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

// The library refuses files with longer tags. Bytes.
constexpr std::size_t longestTag = 4096;

// All positions are offsets into the text, in bytes.
struct AttributePosition {
    std::string_view name;
    std::size_t start;  // of the name
    std::size_t value;  // of its first character, behind the quote
};

struct ElementPosition {
    std::size_t start;  // of the '<'
    std::vector<AttributePosition> attributes;
};

struct SyntaxError {
    std::size_t offset;
    std::string message;
};

struct XmlPositions {
    std::vector<ElementPosition> elements;  // in the order of their opening tags; up to the error, if there is one
    std::optional<SyntaxError> error;
    // A closing tag without an opening one, at which the parser stops without an error.
    std::optional<std::size_t> strayEnd;
};

// `text` holds no NUL and outlives the result.
XmlPositions ScanXml(std::string_view text);

}  // namespace gputune::tool
