#include "profile/profile_reader.h"

#include <tinyxml2.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <string>

#include "records/hex_long.h"

namespace gputune::profile {

namespace {

using tinyxml2::XMLElement;

constexpr char kWhiteSpace[] = " \t\n\v\f\r";

// Reads as scanf's "%f" does, with '.' as decimal point whatever locale the host has set: leading white space, a sign,
// hexadecimal numbers, "inf" and "nan" are accepted, and what follows the number is ignored. What is too large for a
// float is infinite, what is too small 0. Nothing for what is no number.
//
// By way of strtof, which goes by the host's locale; std::from_chars would not, but it adds a tenth to the library.
std::optional<float> ScanFloat(std::string_view text) {
    std::string_view const hostsPoint = std::localeconv()->decimal_point;
    std::string number(text.substr(0, hostsPoint == "." ? text.size() : text.find(hostsPoint)));
    if (std::size_t const point = number.find('.'); point != std::string::npos) {
        number.replace(point, 1, hostsPoint);
    }
    char* end = nullptr;
    float const value = std::strtof(number.c_str(), &end);
    if (end == number.c_str()) {
        return std::nullopt;
    }
    // A lone "0x" is no number to scanf and a 0 to strtof.
    std::size_t const digits = number.find_first_not_of("+-", std::strspn(number.c_str(), kWhiteSpace));
    bool const isLonePrefix = (*end == 'x' || *end == 'X') && end == number.c_str() + digits + 1 && end[-1] == '0';
    return isLonePrefix ? std::nullopt : std::optional(value);
}

void ReadFloat(XMLElement const& row, char const* attribute, float& field) {
    if (char const* const text = row.Attribute(attribute); text != nullptr) {
        field = ScanFloat(text).value_or(field);
    }
}

// Reads as the XML library's own conversion does, which goes by way of sscanf and thus adds a twentieth to the library:
// leading white space, a sign, and hexadecimal numbers are accepted, and what follows the number is ignored; a prefix
// without a digit is no number. What is too large becomes the nearest number that an int, or 32 hexadecimal bits, can
// hold.
void ReadInt(XMLElement const& row, char const* attribute, int& field) {
    char const* const text = row.Attribute(attribute);
    if (text == nullptr) {
        return;
    }
    std::string_view const number(text + std::strspn(text, kWhiteSpace));
    char* end = nullptr;
    if (number.starts_with("0x") || number.starts_with("0X")) {
        constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
        if (number.size() > 2 && kDigits.find(number[2]) != std::string_view::npos) {
            field = static_cast<int>(std::strtoul(text, nullptr, 16));
        }
    } else if (long const value = std::strtol(text, &end, 10); end != text) {
        field = static_cast<int>(value);
    }
}

enum class Entry { Board, Default };

void ReadRow(XMLElement const& row, std::string_view name, Entry entry, PredefinedPerformanceParameter& record) {
    for (FloatRow const& known : kFloatRows) {
        if (name == known.name) {
            ReadFloat(row, "Normal", record.*known.normal);
            if (known.given != nullptr && entry == Entry::Board) {
                ReadFloat(row, "Given", record.*known.given);
            }
        }
    }
    for (IntRow const& known : kIntRows) {
        if (name == known.name && entry == Entry::Board) {
            ReadInt(row, "Normal", record.*known.normal);
        }
    }
}

// An attribute that is absent or does not convert leaves its field as it was.
void ReadEntry(XMLElement const& element, Entry entry, PredefinedPerformanceParameter& record) {
    for (XMLElement const* row = element.FirstChildElement(); row != nullptr; row = row->NextSiblingElement()) {
        if (char const* const name = row->Attribute("Name"); name != nullptr) {
            ReadRow(*row, name, entry, record);
        }
    }
    record.Valid = true;
}

}  // namespace

std::optional<std::string> ReadDocument(std::FILE* file) {
    if (file == nullptr) {
        return std::nullopt;
    }
    std::string document;
    std::array<char, 16 * 1024> block;
    while (std::size_t const count = std::fread(block.data(), 1, block.size(), file)) {
        document.append(block.data(), count);
        if (document.size() > kLargestDocument) {
            return std::nullopt;
        }
    }
    // A directory, where it can be opened at all, shows only here.
    return std::ferror(file) != 0 ? std::nullopt : std::optional(std::move(document));
}

Lookup FindProfile(std::string_view document, std::uint32_t hwid) {
    // The parser takes a NUL for the end of the text.
    document = document.substr(0, document.find('\0'));
    tinyxml2::XMLDocument xml;
    if (document.size() > kLargestDocument || FindLongTag(document) != std::string_view::npos ||
        xml.Parse(document.data(), document.size()) != tinyxml2::XML_SUCCESS) {
        return {Outcome::Unreadable};
    }
    XMLElement const* const root = xml.FirstChildElement();
    if (root == nullptr) {
        return {Outcome::NoRoot};
    }
    XMLElement const* element = root->FirstChildElement();
    if (element == nullptr) {
        return {Outcome::NoEntries};
    }
    Lookup fallback{Outcome::NoMatch};
    for (; element != nullptr; element = element->NextSiblingElement()) {
        if (char const* const id = element->Attribute("Id"); id != nullptr) {
            if (static_cast<std::uint32_t>(ParseHexLong(id)) == hwid) {
                Lookup board{Outcome::BoardEntry};
                ReadEntry(*element, Entry::Board, board.record);
                return board;
            }
        } else if (element->Attribute("Default", "1") != nullptr) {
            ReadEntry(*element, Entry::Default, fallback.record);
            fallback.outcome = Outcome::DefaultEntry;
        }
    }
    return fallback;
}

}  // namespace gputune::profile
