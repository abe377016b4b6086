// Texts in UTF-8: width, lists, placeholders.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

// The number of columns a text takes; every character counts one.
std::size_t DisplayWidth(std::string_view text);
// The first `width` characters.
std::string_view Cut(std::string_view text, std::size_t width);
// Blanks after (or before) the text up to the width.
std::string PadRight(std::string text, std::size_t width);
std::string PadLeft(std::string const& text, std::size_t width);

// "a, b, c" with the separator ", ".
std::string Joined(std::vector<std::string> const& texts, std::string_view separator);
// "a, b and c".
std::string Enumeration(std::vector<std::string> const& texts);
// "1 reading", "2 readings".
std::string CountText(std::size_t count, std::string const& one);

// Replaces each {{name}} by the text of that name, which must exist. Replaced texts are not searched again.
std::string FillPlaceholders(std::string_view form, std::map<std::string_view, std::string_view> const& texts);

}  // namespace gputune::tool
