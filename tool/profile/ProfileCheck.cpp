#include "tool/profile/ProfileCheck.h"

#include <tinyxml2.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "src/profile/profile_format.h"
#include "tool/values/Quoted.h"
#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

using tinyxml2::XMLAttribute;
using tinyxml2::XMLElement;

constexpr std::pair<tinyxml2::XMLError, char const*> kSyntaxErrors[] = {
    {tinyxml2::XML_ERROR_EMPTY_DOCUMENT, "no root element"},
    {tinyxml2::XML_ERROR_PARSING, "a tag without a name (a '<' in text is written \"&lt;\")"},
    {tinyxml2::XML_ERROR_PARSING_ELEMENT, "a tag without its end \">\", or with what is no attribute in it"},
    {tinyxml2::XML_ERROR_PARSING_ATTRIBUTE, "a tag with an attribute that has no value in quotes, or appears twice"},
    {tinyxml2::XML_ERROR_PARSING_TEXT, "text that no tag follows"},
    {tinyxml2::XML_ERROR_PARSING_CDATA, "CDATA section without its end \"]]>\""},
    {tinyxml2::XML_ERROR_PARSING_COMMENT, "comment without its end \"-->\""},
    {tinyxml2::XML_ERROR_PARSING_DECLARATION,
     "a declaration without its end \"?>\", or not at the beginning of the file"},
    {tinyxml2::XML_ERROR_PARSING_UNKNOWN, "declaration without its end \">\""},
    {tinyxml2::XML_ERROR_MISMATCHED_ELEMENT, "an element that is not closed, or is closed by another name"},
    {tinyxml2::XML_ELEMENT_DEPTH_EXCEEDED, "elements are nested too deeply"},
};

std::string SyntaxErrorText(tinyxml2::XMLDocument const& xml) {
    for (auto const& [error, text] : kSyntaxErrors) {
        if (error == xml.ErrorID()) {
            return text;
        }
    }
    return std::string("not well-formed XML: ") + xml.ErrorName();
}

class Checker {
public:
    explicit Checker(std::string_view text) : text_(text) {}

    std::vector<Problem> Check() {
        if (Parse()) {
            CheckRoot();
        }
        std::stable_sort(problems_.begin(), problems_.end(),
                         [](Problem const& a, Problem const& b) { return a.line < b.line; });
        return std::move(problems_);
    }

private:
    void AddError(int line, std::string message) { problems_.push_back({line, Severity::Error, std::move(message)}); }
    void AddWarning(int line, std::string message) {
        problems_.push_back({line, Severity::Warning, std::move(message)});
    }

    void AddNumber(XMLAttribute const& number, NumberProblem const& problem) {
        if (!problem.text.empty()) {
            problems_.push_back({number.GetLineNum(), problem.severity,
                                 Quoted(number.Name()) + " " + Quoted(number.Value()) + std::string(problem.text)});
        }
    }

    int LineOf(std::size_t offset) const {
        return 1 +
               static_cast<int>(std::count(text_.begin(), text_.begin() + static_cast<std::ptrdiff_t>(offset), '\n'));
    }

    // False when the file cannot be read.
    bool Parse() {
        if (text_.size() > profile::kLargestDocument) {
            AddError(1, "the file is longer than 4 MiB and is not read");
            return false;
        }
        if (text_.starts_with("\xFF\xFE") || text_.starts_with("\xFE\xFF")) {
            AddError(1, "the file is UTF-16 text, which is not read: save it as UTF-8");
            return false;
        }
        if (std::size_t const nul = text_.find('\0'); nul != std::string_view::npos) {
            AddError(LineOf(nul), "a NUL character; nothing behind it is read");
            text_ = text_.substr(0, nul);
        }
        if (std::size_t const tag = profile::FindLongTag(text_); tag != std::string_view::npos) {
            AddError(LineOf(tag), "this tag is longer than " + std::to_string(profile::kLongestTag) + " bytes");
            return false;
        }
        if (xml_.Parse(text_.data(), text_.size()) != tinyxml2::XML_SUCCESS) {
            AddError(std::max(1, xml_.ErrorLineNum()), SyntaxErrorText(xml_));
            return false;
        }
        if (xml_.FirstChildElement() == nullptr) {
            AddError(1, "no root element");
            return false;
        }
        CheckEnd();
        return true;
    }

    // tinyxml2 stops without an error at a closing tag that has no opening one. Then it does not reach a comment that
    // is added at the end.
    void CheckEnd() {
        constexpr char const* kEnd = " end of the profile file ";
        tinyxml2::XMLDocument whole;
        std::string const text = std::string(text_) + "<!--" + kEnd + "-->";
        whole.Parse(text.data(), text.size());
        if (whole.LastChild() == nullptr || std::string_view(whole.LastChild()->Value()) != kEnd) {
            AddError(xml_.LastChild()->GetLineNum(),
                     "a closing tag without an opening one follows; nothing behind it is read");
        }
    }

    void CheckRoot() {
        XMLElement const& root = *xml_.FirstChildElement();
        if (root.FirstChildElement() == nullptr) {
            AddError(root.GetLineNum(), "no entries in the root element");
        }
        for (XMLElement const* entry = root.FirstChildElement(); entry != nullptr;
             entry = entry->NextSiblingElement()) {
            CheckEntry(*entry);
        }
        if (XMLElement const* const second = root.NextSiblingElement()) {
            AddWarning(second->GetLineNum(), "only the first element of the file is read");
        }
    }

    void CheckEntry(XMLElement const& entry) {
        int const line = entry.GetLineNum();
        XMLAttribute const* const id = entry.FindAttribute("Id");
        XMLAttribute const* const isDefault = entry.FindAttribute("Default");
        if (id != nullptr) {
            CheckId(*id, line);
            if (isDefault != nullptr) {
                AddWarning(isDefault->GetLineNum(), R"("Default" is not looked at beside "Id")");
            }
            CheckRows(entry, true);
        } else if (isDefault == nullptr) {
            AddError(line, R"(an entry with neither "Id" nor "Default" is never used)");
        } else if (std::string_view(isDefault->Value()) != "1") {
            AddWarning(isDefault->GetLineNum(), "an entry whose \"Default\" is " + Quoted(isDefault->Value()) +
                                                    " instead of \"1\" is never used");
        } else {
            if (defaultLine_) {
                AddWarning(
                    line, "another default entry, whose values replace those of line " + std::to_string(*defaultLine_));
            }
            defaultLine_ = line;
            CheckRows(entry, false);
        }
    }

    void CheckId(XMLAttribute const& attribute, int entryLine) {
        long long id = 0;
        NumberProblem const problem = CheckIdentifier(attribute.Value(), id);
        AddNumber(attribute, problem);
        if (problem.severity == Severity::Error) {
            return;
        }
        auto const [earlier, isNew] = entryLines_.try_emplace(id, entryLine);
        if (!isNew) {
            AddError(attribute.GetLineNum(),
                     "the same \"Id\" as in line " + std::to_string(earlier->second) + "; this entry is never used");
        }
    }

    void CheckRows(XMLElement const& entry, bool isBoard) {
        std::set<std::string_view> names;
        for (XMLElement const* row = entry.FirstChildElement(); row != nullptr; row = row->NextSiblingElement()) {
            CheckRow(*row, isBoard, names);
        }
        std::vector<std::string> clocks;
        std::vector<std::string> powerLimits;
        for (profile::FloatRow const& row : profile::kFloatRows) {
            if (!names.contains(row.name)) {
                (row.name.starts_with("Power") ? powerLimits : clocks).emplace_back(row.name);
            }
        }
        if (!clocks.empty()) {
            AddError(entry.GetLineNum(),
                     "clocks that this entry does not give are 0 MHz on Overdrive8 boards: " + Joined(clocks, ", "));
        }
        if (!powerLimits.empty()) {
            AddWarning(entry.GetLineNum(),
                       "power limits that this entry does not give are 0 %: " + Joined(powerLimits, ", "));
        }
    }

    void CheckRow(XMLElement const& row, bool isBoard, std::set<std::string_view>& names) {
        XMLAttribute const* const attribute = row.FindAttribute("Name");
        if (attribute == nullptr) {
            AddError(row.GetLineNum(), "a value without \"Name\" is not read");
            return;
        }
        std::string_view const name = attribute->Value();
        auto const isNamed = [name](auto const& known) { return known.name == name; };
        auto const floatRow = std::find_if(profile::kFloatRows.begin(), profile::kFloatRows.end(), isNamed);
        bool const isFloat = floatRow != profile::kFloatRows.end();
        if (!isFloat && std::none_of(profile::kIntRows.begin(), profile::kIntRows.end(), isNamed)) {
            AddWarning(attribute->GetLineNum(), "a value with the unknown \"Name\" " + Quoted(name) + " is not read");
            return;
        }
        if (!isBoard && !isFloat) {
            AddWarning(attribute->GetLineNum(), Quoted(name) + " is read in board entries only");
            return;
        }
        if (!names.insert(name).second) {
            AddWarning(attribute->GetLineNum(), "another " + Quoted(name) + " in the same entry replaces the first");
        }
        if (XMLAttribute const* const normal = row.FindAttribute("Normal")) {
            AddNumber(*normal, isFloat ? CheckFloat(normal->Value()) : CheckInteger(normal->Value()));
        } else {
            AddError(row.GetLineNum(), Quoted(name) + " has no \"Normal\"");
        }
        if (XMLAttribute const* const given = row.FindAttribute("Given")) {
            if (!isFloat || floatRow->given == nullptr) {
                AddWarning(given->GetLineNum(), "\"Given\" is read with GpuOC and MemOC only");
            } else if (!isBoard) {
                AddWarning(given->GetLineNum(), "\"Given\" is read in board entries only");
            } else {
                AddNumber(*given, CheckFloat(given->Value()));
            }
        }
    }

    std::string_view text_;
    tinyxml2::XMLDocument xml_;
    std::optional<int> defaultLine_;
    std::map<long long, int> entryLines_;
    std::vector<Problem> problems_;
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
    return std::string(file) + ':' + std::to_string(problem.line) +
           (problem.severity == Severity::Error ? ": error: " : ": warning: ") + problem.message;
}

}  // namespace gputune::tool
