// Comma-separated values, one line at a time, with the position of every field for messages. Fields with commas or
// quotation marks stand in quotation marks, which are doubled inside. Where a decimal comma is usual, spreadsheets
// separate by semicolons instead.
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

// A field of any content as one field of a line. Line ends become blanks: a record is always one line.
std::string CsvQuote(std::string_view text);

class CsvReader {
public:
    // The text is kept by reference. A byte order mark, "\r\n" and missing ends of the last line are accepted. Fields
    // are separated by what stands first in the text, outside quotation marks, of a comma and a semicolon.
    explicit CsvReader(std::string_view text);

    // ',' or ';'.
    char Separator() const { return separator_; }

    // The fields of the next line that is not empty; false at the end of the text. Throws CsvError when a quotation
    // mark is not closed or stands in the middle of a field.
    bool Next(std::vector<CsvField>& fields);

    // Of the line that Next read last.
    std::size_t LineNumber() const { return line_; }
    // Whether that line has a line end: the last one of a file that was cut off has none.
    bool IsComplete() const { return complete_; }

private:
    std::string_view rest_;
    char separator_;
    std::size_t line_ = 0;
    bool complete_ = true;
};

}  // namespace gputune::tool
