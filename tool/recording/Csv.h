// Comma-separated values, read line by line. A field with commas or quotation marks stands in quotation marks, which
// are doubled inside. Spreadsheets of countries with a decimal comma separate fields by semicolons instead.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace gputune::tool {

struct CsvField {
    std::string text;
    std::size_t column = 1;  // of its first character in the line, counted in characters
};

// What is wrong with a text, and where; lines and columns count from 1.
struct CsvError {
    std::size_t line;
    std::size_t column;
    std::string message;
};

// Any text as one field of a line. Line ends become blanks, so that a record is always one line.
std::string CsvQuote(std::string_view text);

class CsvReader {
public:
    // Keeps a reference to the text. Accepts a byte order mark, "\r\n", and a last line without a line end. The
    // separator is the first comma or semicolon of the text outside quotation marks.
    explicit CsvReader(std::string_view text);

    // ',' or ';'.
    char Separator() const { return separator_; }

    // The fields of the next line that is not empty; false at the end of the text. Throws CsvError when a quotation
    // mark is not closed or stands in the middle of a field.
    bool Next(std::vector<CsvField>& fields);

    // Of the line that Next read last.
    std::size_t LineNumber() const { return line_; }
    // Whether that line has a line end; the last line of a file that was cut off has none.
    bool IsComplete() const { return complete_; }

private:
    std::string_view rest_;
    char separator_;
    std::size_t line_ = 0;
    bool complete_ = true;
};

}  // namespace gputune::tool
