#include "tool/recording/Csv.h"

#include <algorithm>

#include "tool/values/Text.h"

namespace gputune::tool {

namespace {

// One line, from left to right.
class LineReader {
public:
    LineReader(std::string_view text, char separator, std::size_t line)
        : text_(text), separator_(separator), line_(line) {}

    std::vector<CsvField> Fields() {
        std::vector<CsvField> fields;
        do {
            fields.push_back(Next());
        } while (position_++ < text_.size());  // past the separator
        return fields;
    }

private:
    // Leaves the position at the separator behind the field, or at the end.
    CsvField Next() {
        column_ += DisplayWidth(text_.substr(counted_, position_ - counted_));
        counted_ = position_;
        CsvField field{.text = "", .column = column_};
        if (position_ < text_.size() && text_[position_] == '"') {
            field.text = Quoted();
        } else {
            std::size_t const end = std::min(text_.find(separator_, position_), text_.size());
            field.text = text_.substr(position_, end - position_);
            position_ = end;
        }
        return field;
    }

    std::string Quoted() {
        std::size_t const start = position_;
        std::string content;
        for (++position_; position_ < text_.size(); ++position_) {
            if (text_[position_] != '"') {
                content += text_[position_];
            } else if (text_.substr(position_ + 1, 1) == "\"") {
                ++position_;
                content += '"';
            } else {
                ++position_;
                if (position_ < text_.size() && text_[position_] != separator_) {
                    throw CsvError{line_, Column(position_),
                                   std::string(separator_ == ',' ? "a comma" : "a semicolon") +
                                       " is missing after the quotation mark"};
                }
                return content;
            }
        }
        throw CsvError{line_, Column(start), "the quotation mark is not closed"};
    }

    std::size_t Column(std::size_t position) const { return DisplayWidth(text_.substr(0, position)) + 1; }

    std::string_view text_;
    char separator_;
    std::size_t line_;
    std::size_t position_ = 0;
    // The column at the position counted_. Counting goes on from there for the next field.
    std::size_t counted_ = 0;
    std::size_t column_ = 1;
};

char FindSeparator(std::string_view text) {
    bool isQuoted = false;
    for (char const c : text) {
        isQuoted = isQuoted != (c == '"');
        if (!isQuoted && (c == ',' || c == ';')) {
            return c;
        }
    }
    return ',';
}

}  // namespace

std::string CsvQuote(std::string_view text) {
    if (text.find_first_of(",;\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string quoted = "\"";
    for (char const c : text) {
        quoted += c == '\r' || c == '\n' ? ' ' : c;
        if (c == '"') {
            quoted += c;
        }
    }
    return quoted + "\"";
}

CsvReader::CsvReader(std::string_view text) : rest_(text), separator_(FindSeparator(text)) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (rest_.starts_with(kByteOrderMark)) {
        rest_.remove_prefix(kByteOrderMark.size());
    }
}

bool CsvReader::Next(std::vector<CsvField>& fields) {
    while (!rest_.empty()) {
        std::size_t const end = rest_.find('\n');
        complete_ = end != std::string_view::npos;
        std::string_view line = rest_.substr(0, end);
        rest_.remove_prefix(complete_ ? end + 1 : rest_.size());
        ++line_;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (!line.empty()) {
            fields = LineReader(line, separator_, line_).Fields();
            return true;
        }
    }
    return false;
}

}  // namespace gputune::tool
