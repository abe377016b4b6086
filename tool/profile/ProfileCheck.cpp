#include "tool/profile/ProfileCheck.h"

#include <tinyxml2.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "tool/profile/ProfileValues.h"
#include "tool/profile/XmlPositions.h"
#include "tool/values/Quoted.h"

namespace gputune::tool {

namespace {

using tinyxml2::XMLElement;

struct KnownRow {
    std::string_view name;
    bool isFloat;
    bool hasGiven;
    bool inDefault;  // read in the default entry
    bool isClock;
};

constexpr std::array<KnownRow, 8> knownRows{{
    {"GpuOC", true, true, true, true},
    {"MemOC", true, true, true, true},
    {"PowerOC", true, false, true, false},
    {"GpuSilent", true, false, true, true},
    {"MemSilent", true, false, true, true},
    {"PowerSilent", true, false, true, false},
    {"Watt", false, false, false, false},
    {"NewestVBIOS", false, false, false, false},
}};

KnownRow const* FindRow(std::string_view name) {
    auto const found =
        std::find_if(knownRows.begin(), knownRows.end(), [&](KnownRow const& row) { return row.name == name; });
    return found == knownRows.end() ? nullptr : &*found;
}

class Checker {
public:
    explicit Checker(std::string_view text) : text_(text) {}

    std::vector<Problem> Check() {
        if (text_.size() > largestProfileFile) {
            AddError(0, "the file is longer than 4 MiB and is not read");
        } else if (CutAtNul() && Parse()) {
            CheckRoot();
        }
        return Located();
    }

private:
    struct Finding {
        std::size_t offset;
        Severity severity;
        std::string message;
    };

    void AddError(std::size_t offset, std::string message) {
        findings_.push_back({offset, Severity::Error, std::move(message)});
    }
    void AddWarning(std::size_t offset, std::string message) {
        findings_.push_back({offset, Severity::Warning, std::move(message)});
    }

    // False when that leaves nothing that is worth looking at.
    bool CutAtNul() {
        if (text_.starts_with("\xFF\xFE") || text_.starts_with("\xFE\xFF")) {
            AddError(0, "the file is UTF-16 text, which is not read: save it as UTF-8");
            return false;
        }
        std::size_t const nul = text_.find('\0');
        if (nul != std::string_view::npos) {
            AddError(nul, "a NUL character; nothing behind it is read");
            text_ = text_.substr(0, nul);
        }
        return true;
    }

    bool Parse() {
        for (std::size_t end = text_.find('\n'); end != std::string_view::npos; end = text_.find('\n', end + 1)) {
            lineEnds_.push_back(end);
        }
        positions_ = ScanXml(text_);
        if (positions_.error) {
            AddError(positions_.error->offset, positions_.error->message);
            return false;
        }
        if (positions_.strayEnd) {
            AddError(*positions_.strayEnd, "a closing tag without an opening one; nothing behind it is read");
        }
        if (positions_.elements.empty()) {
            AddError(0, "no root element");
            return false;
        }
        if (xml_.Parse(text_.data(), text_.size()) != tinyxml2::XML_SUCCESS) {
            AddError(0, std::string("not well-formed XML: ") + xml_.ErrorName());
            return false;
        }
        return true;
    }

    // ---- Positions. The elements are visited in the order of their opening tags, so a count finds their places. ----

    ElementPosition const& TakePosition() {
        static ElementPosition const none{0, {}};
        return next_ < positions_.elements.size() ? positions_.elements[next_++] : none;
    }

    void SkipPositions(XMLElement const& element) {
        // An element's descendants, without recursion: the next tag that opens behind its end is its successor's.
        for (XMLElement const* child = element.FirstChildElement(); child != nullptr;
             child = child->NextSiblingElement()) {
            TakePosition();
            SkipPositions(*child);
        }
    }

    static std::size_t NamePlace(ElementPosition const& element, std::string_view attribute) {
        return Place(element, attribute, &AttributePosition::start);
    }
    static std::size_t ValuePlace(ElementPosition const& element, std::string_view attribute) {
        return Place(element, attribute, &AttributePosition::value);
    }
    static std::size_t Place(ElementPosition const& element, std::string_view attribute,
                             std::size_t AttributePosition::*which) {
        for (AttributePosition const& candidate : element.attributes) {
            if (candidate.name == attribute) {
                return candidate.*which;
            }
        }
        return element.start;
    }

    std::size_t LineOf(std::size_t offset) const {
        auto const next = std::upper_bound(lineEnds_.begin(), lineEnds_.end(), offset);
        return 1 + static_cast<std::size_t>(next - lineEnds_.begin());
    }

    // ---- The file from the outside in. ----

    void CheckRoot() {
        XMLElement const& root = *xml_.FirstChildElement();
        std::size_t const place = TakePosition().start;
        if (root.FirstChildElement() == nullptr) {
            AddError(place, "no entries in the root element");
        }
        for (XMLElement const* entry = root.FirstChildElement(); entry != nullptr;
             entry = entry->NextSiblingElement()) {
            CheckEntry(*entry);
        }
        if (root.NextSiblingElement() != nullptr) {
            AddWarning(TakePosition().start, "only the first element of the file is read");
        }
    }

    void CheckEntry(XMLElement const& entry) {
        ElementPosition const& place = TakePosition();
        char const* const id = entry.Attribute("Id");
        char const* const isDefault = entry.Attribute("Default");
        if (id != nullptr) {
            CheckId(id, place);
            if (isDefault != nullptr) {
                AddWarning(NamePlace(place, "Default"), R"("Default" is not looked at beside "Id")");
            }
            CheckRows(entry, place.start, true);
        } else if (isDefault == nullptr) {
            AddError(place.start, R"(an entry with neither "Id" nor "Default" is never used)");
            SkipPositions(entry);
        } else if (std::string_view(isDefault) != "1") {
            AddWarning(ValuePlace(place, "Default"),
                       "an entry whose \"Default\" is " + Quoted(isDefault) + " instead of \"1\" is never used");
            SkipPositions(entry);
        } else {
            if (defaultLine_) {
                AddWarning(place.start, "another default entry, whose values replace those of line " +
                                            std::to_string(*defaultLine_));
            }
            defaultLine_ = LineOf(place.start);
            CheckRows(entry, place.start, false);
        }
    }

    void CheckId(std::string_view id, ElementPosition const& place) {
        std::size_t const offset = ValuePlace(place, "Id");
        long number = 0;
        Reading const reading = JudgeIdentifier(id, number);
        if (reading == Reading::NotANumber) {
            AddError(offset, "\"Id\" " + Quoted(id) +
                                 " is not a hexadecimal number; every lookup that comes to this entry fails");
            return;
        }
        if (reading == Reading::OutOfRange) {
            AddError(offset, "\"Id\" " + Quoted(id) +
                                 " is beyond 7FFFFFFF (or -80000000); every lookup that comes to this entry fails");
            return;
        }
        if (reading == Reading::Trailing) {
            AddWarning(offset, "\"Id\" " + Quoted(id) + ": what follows the number is ignored");
        }
        auto const [earlier, isNew] = entryOffsets_.try_emplace(number, place.start);
        if (!isNew) {
            AddError(offset, "the same \"Id\" as in line " + std::to_string(LineOf(earlier->second)) +
                                 "; this entry is never used");
        }
    }

    void CheckRows(XMLElement const& entry, std::size_t start, bool isBoard) {
        std::set<std::string_view> names;
        for (XMLElement const* row = entry.FirstChildElement(); row != nullptr; row = row->NextSiblingElement()) {
            ElementPosition const& place = TakePosition();
            CheckRow(*row, place, isBoard, names);
            SkipPositions(*row);
        }
        std::string clocks;
        std::string powerLimits;
        for (KnownRow const& known : knownRows) {
            if (known.inDefault && !names.contains(known.name)) {
                std::string& missing = known.isClock ? clocks : powerLimits;
                missing += (missing.empty() ? "" : ", ") + std::string(known.name);
            }
        }
        if (!clocks.empty()) {
            AddError(start, "clocks that this entry does not give are 0 MHz on Overdrive8 boards: " + clocks);
        }
        if (!powerLimits.empty()) {
            AddWarning(start, "power limits that this entry does not give are 0 %: " + powerLimits);
        }
    }

    void CheckRow(XMLElement const& row, ElementPosition const& place, bool isBoard,
                  std::set<std::string_view>& names) {
        char const* const name = row.Attribute("Name");
        if (name == nullptr) {
            AddError(place.start, "a value without \"Name\" is not read");
            return;
        }
        KnownRow const* const known = FindRow(name);
        if (known == nullptr) {
            AddWarning(ValuePlace(place, "Name"), "a value with the unknown \"Name\" " + Quoted(name) + " is not read");
            return;
        }
        if (!isBoard && !known->inDefault) {
            AddWarning(ValuePlace(place, "Name"), Quoted(name) + " is read in board entries only");
            return;
        }
        if (!names.insert(known->name).second) {
            AddWarning(ValuePlace(place, "Name"), "another " + Quoted(name) + " in the same entry replaces the first");
        }
        if (char const* const normal = row.Attribute("Normal")) {
            CheckNumber("Normal", normal, ValuePlace(place, "Normal"), known->isFloat);
        } else {
            AddError(place.start, Quoted(name) + " has no \"Normal\"");
        }
        CheckGiven(row, *known, place, isBoard);
    }

    void CheckGiven(XMLElement const& row, KnownRow const& known, ElementPosition const& place, bool isBoard) {
        char const* const given = row.Attribute("Given");
        if (given == nullptr) {
            return;
        }
        if (!known.hasGiven) {
            AddWarning(NamePlace(place, "Given"), "\"Given\" is read with GpuOC and MemOC only");
        } else if (!isBoard) {
            AddWarning(NamePlace(place, "Given"), "\"Given\" is read in board entries only");
        } else {
            CheckNumber("Given", given, ValuePlace(place, "Given"), true);
        }
    }

    void CheckNumber(std::string_view attribute, std::string_view value, std::size_t offset, bool isFloat) {
        std::string const what = Quoted(attribute) + " " + Quoted(value);
        switch (isFloat ? JudgeFloat(value) : JudgeInteger(value)) {
            case Reading::Clean:
                break;
            case Reading::NotANumber:
                AddError(offset, what + (isFloat ? " is not a number" : " is not a whole number"));
                break;
            case Reading::OutOfRange:
                AddError(offset, what + (isFloat ? " is too large or too small for a number of single precision"
                                                 : " is beyond 32 bits"));
                break;
            case Reading::NotFinite:
                AddError(offset, what + " is not a finite number");
                break;
            case Reading::TooLarge:
                AddError(offset, what + " does not fit: at most " + std::to_string(largestValue));
                break;
            case Reading::Trailing:
                AddWarning(offset, what + ": what follows the number is ignored");
                break;
        }
    }

    // ---- Offsets to lines and columns, in one pass over the text. ----

    std::vector<Problem> Located() {
        std::stable_sort(findings_.begin(), findings_.end(),
                         [](Finding const& a, Finding const& b) { return a.offset < b.offset; });
        std::vector<Problem> problems;
        problems.reserve(findings_.size());
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        std::size_t offset = text_.starts_with(byteOrderMark) ? byteOrderMark.size() : 0;
        std::size_t line = 1;
        std::size_t column = 1;
        for (Finding& finding : findings_) {
            for (; offset < finding.offset; ++offset) {
                if (text_[offset] == '\n') {
                    ++line;
                    column = 1;
                } else if ((static_cast<unsigned char>(text_[offset]) & 0xC0U) != 0x80U) {
                    ++column;
                }
            }
            problems.push_back({line, column, finding.severity, std::move(finding.message)});
        }
        return problems;
    }

    std::string_view text_;
    tinyxml2::XMLDocument xml_;
    XmlPositions positions_;
    std::size_t next_ = 0;
    std::optional<std::size_t> defaultLine_;
    std::vector<std::size_t> lineEnds_;
    std::map<long, std::size_t> entryOffsets_;
    std::vector<Finding> findings_;
};

}  // namespace

std::vector<Problem> CheckProfile(std::string_view text) {
    return Checker(text).Check();
}

bool HasError(std::vector<Problem> const& problems) {
    return std::any_of(problems.begin(), problems.end(),
                       [](Problem const& problem) { return problem.severity == Severity::Error; });
}

std::string FormatProblem(std::string_view file, Problem const& problem) {
    return std::string(file) + ':' + std::to_string(problem.line) + ':' + std::to_string(problem.column) +
           (problem.severity == Severity::Error ? ": error: " : ": warning: ") + problem.message;
}

}  // namespace gputune::tool
