#include "tool/profile/XmlPositions.h"

#include <tinyxml2.h>

#include <algorithm>
#include <utility>

namespace gputune::tool {

namespace {

constexpr std::string_view kXmlWhiteSpace = " \t\n\v\f\r";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || static_cast<unsigned char>(c) >= 0x80;
}

bool StartsName(char c) {
    return IsLetter(c) || c == ':' || c == '_';
}

bool ContinuesName(char c) {
    return StartsName(c) || (c >= '0' && c <= '9') || c == '.' || c == '-';
}

// Follows the parser of tinyxml2 step by step, its leniencies included: blanks behind '<', attributes of closing tags,
// several roots, text outside the root.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    XmlPositions Scan() {
        SkipWhiteSpace();
        if (Rest().starts_with(byteOrderMark)) {
            position_ += byteOrderMark.size();
        }
        while (!result_.error && !result_.strayEnd) {
            SkipWhiteSpace();
            if (AtEnd()) {
                break;
            }
            ScanNode();
        }
        if (!result_.error && !result_.strayEnd && !open_.empty()) {
            Fail(open_.back().start, "element \"" + std::string(open_.back().name) + "\" is not closed");
        }
        return std::move(result_);
    }

private:
    struct OpenElement {
        std::string_view name;
        std::size_t start;
    };

    std::string_view Rest() const { return text_.substr(position_); }
    bool AtEnd() const { return position_ >= text_.size(); }
    bool At(char c) const { return !AtEnd() && text_[position_] == c; }

    void Fail(std::size_t offset, std::string message) { result_.error = SyntaxError{offset, std::move(message)}; }

    void SkipWhiteSpace() { position_ = std::min(text_.find_first_not_of(kXmlWhiteSpace, position_), text_.size()); }

    void ScanNode() {
        std::size_t const start = position_;
        if (!At('<')) {
            position_ = std::min(text_.find('<', position_), text_.size());
            if (AtEnd() || position_ + 1 == text_.size()) {
                Fail(start, "text that no tag follows");
            }
            onlyDeclarations_ = false;
            return;
        }
        if (Rest().starts_with("<?")) {
            if (!open_.empty() || !onlyDeclarations_) {
                Fail(start, "a declaration may stand at the beginning of the file only");
            } else {
                SkipPast(start, 2, "?>", "declaration");
            }
            return;
        }
        onlyDeclarations_ = false;
        if (Rest().starts_with("<!--")) {
            SkipPast(start, 4, "-->", "comment");
        } else if (Rest().starts_with("<![CDATA[")) {
            SkipPast(start, 9, "]]>", "CDATA section");
        } else if (Rest().starts_with("<!")) {
            SkipPast(start, 2, ">", "declaration");
        } else {
            ScanTag(start);
        }
    }

    void SkipPast(std::size_t start, std::size_t headLength, std::string_view end, char const* what) {
        std::size_t const found = text_.find(end, start + headLength);
        if (found == std::string_view::npos) {
            Fail(start, std::string(what) + " without its end \"" + std::string(end) + "\"");
        } else {
            position_ = found + end.size();
        }
    }

    std::string_view ScanName() {
        std::size_t const start = position_;
        if (!AtEnd() && StartsName(text_[position_])) {
            while (!AtEnd() && ContinuesName(text_[position_])) {
                ++position_;
            }
        }
        return text_.substr(start, position_ - start);
    }

    void ScanTag(std::size_t start) {
        ++position_;
        SkipWhiteSpace();
        bool closes = At('/');
        position_ += closes ? 1 : 0;
        std::string_view const name = ScanName();
        if (name.empty()) {
            Fail(start, "a tag without a name (a '<' in text is written \"&lt;\")");
            return;
        }
        ElementPosition element{start, {}};
        bool const isEmpty = ScanAttributes(start, name, element);
        if (!result_.error && position_ - start > longestTag) {
            FailTooLong(start);
        }
        if (result_.error) {
            return;
        }
        // "</name/>" is an empty element to the parser.
        closes = closes && !isEmpty;
        if (closes) {
            Close(start, name);
            return;
        }
        result_.elements.push_back(std::move(element));
        if (!isEmpty) {
            open_.push_back({name, start});
            // The document itself counts as a level.
            if (open_.size() + 1 >= static_cast<std::size_t>(TINYXML2_MAX_ELEMENT_DEPTH)) {
                Fail(start, "elements are nested too deeply");
            }
        }
    }

    void FailTooLong(std::size_t start) {
        Fail(start, "this tag is longer than " + std::to_string(longestTag) + " bytes");
    }

    // Up to behind the '>' of the tag. True when the tag ends in "/>".
    bool ScanAttributes(std::size_t start, std::string_view tag, ElementPosition& element) {
        for (;;) {
            SkipWhiteSpace();
            if (position_ - start > longestTag) {
                FailTooLong(start);
                return false;
            }
            if (AtEnd()) {
                Fail(start, "the tag \"" + std::string(tag) + R"(" has no end ">")");
                return false;
            }
            if (Rest().starts_with('>')) {
                position_ += 1;
                return false;
            }
            if (Rest().starts_with("/>")) {
                position_ += 2;
                return true;
            }
            if (!StartsName(text_[position_])) {
                Fail(position_, "neither an attribute nor the end of the tag \"" + std::string(tag) + "\"");
                return false;
            }
            if (!ScanAttribute(element)) {
                return false;
            }
        }
    }

    bool ScanAttribute(ElementPosition& element) {
        std::size_t const start = position_;
        std::string_view const name = ScanName();
        auto const fail = [&](std::size_t offset, std::string const& what) {
            Fail(offset, "attribute \"" + std::string(name) + "\" " + what);
            return false;
        };
        SkipWhiteSpace();
        if (!At('=')) {
            return fail(start, "has no value");
        }
        ++position_;
        SkipWhiteSpace();
        if (!At('"') && !At('\'')) {
            return fail(start, "has a value without quotes");
        }
        std::size_t const quote = position_;
        std::size_t const end = text_.find(text_[quote], quote + 1);
        if (end == std::string_view::npos) {
            return fail(quote, "has a value without its closing quote");
        }
        position_ = end + 1;
        if (std::any_of(element.attributes.begin(), element.attributes.end(),
                        [&](AttributePosition const& earlier) { return earlier.name == name; })) {
            return fail(start, "appears twice in its element");
        }
        element.attributes.push_back({name, start, quote + 1});
        return true;
    }

    void Close(std::size_t start, std::string_view name) {
        if (open_.empty()) {
            result_.strayEnd = start;
        } else if (open_.back().name != name) {
            Fail(start, "closing tag \"" + std::string(name) + "\" where \"" + std::string(open_.back().name) +
                            "\" is to be closed");
        } else {
            open_.pop_back();
        }
    }

    std::string_view text_;
    std::size_t position_ = 0;
    std::vector<OpenElement> open_;
    bool onlyDeclarations_ = true;  // nothing else has been seen at the level of the document
    XmlPositions result_;
};

}  // namespace

XmlPositions ScanXml(std::string_view text) {
    return Scanner(text).Scan();
}

}  // namespace gputune::tool
