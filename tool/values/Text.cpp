#include "tool/values/Text.h"

#include <algorithm>

namespace gputune::tool {

namespace {

bool StartsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

}  // namespace

std::size_t DisplayWidth(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), StartsCharacter));
}

std::string_view Cut(std::string_view text, std::size_t width) {
    auto const isBeyond = [&width](char byte) { return StartsCharacter(byte) && width-- == 0; };
    return text.substr(0, static_cast<std::size_t>(std::find_if(text.begin(), text.end(), isBeyond) - text.begin()));
}

std::string PadRight(std::string text, std::size_t width) {
    std::size_t const used = DisplayWidth(text);
    text.append(width > used ? width - used : 0, ' ');
    return text;
}

std::string PadLeft(std::string const& text, std::size_t width) {
    std::size_t const used = DisplayWidth(text);
    return std::string(width > used ? width - used : 0, ' ') + text;
}

std::string Joined(std::vector<std::string> const& texts, std::string_view separator) {
    std::string joined;
    for (std::string const& text : texts) {
        joined.append(joined.empty() ? "" : separator).append(text);
    }
    return joined;
}

std::string Enumeration(std::vector<std::string> const& texts) {
    if (texts.size() < 2) {
        return Joined(texts, "");
    }
    return Joined({texts.begin(), texts.end() - 1}, ", ") + " and " + texts.back();
}

std::string CountText(std::size_t count, std::string const& one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string FillPlaceholders(std::string_view form, std::map<std::string_view, std::string_view> const& texts) {
    std::string filled;
    for (;;) {
        std::size_t const start = form.find("{{");
        std::size_t const end = form.find("}}", start);
        if (end == std::string_view::npos) {
            return filled.append(form);
        }
        filled.append(form.substr(0, start)).append(texts.at(form.substr(start + 2, end - start - 2)));
        form.remove_prefix(end + 2);
    }
}

}  // namespace gputune::tool
