#include "reference.h"

#include <sstream>

namespace gputune::matrix {

namespace {

// The number of lines, then the lines, of which none has a line end in it.
void Write(std::ostream& out, test::Lines const& lines) {
    out << lines.size() << '\n';
    for (std::string const& line : lines) {
        out << line << '\n';
    }
}

std::size_t ReadNumber(std::istream& in) {
    std::string line;
    std::getline(in, line);
    return std::stoul(line);
}

test::Lines ReadLines(std::istream& in) {
    test::Lines lines(ReadNumber(in));
    for (std::string& line : lines) {
        std::getline(in, line);
    }
    return lines;
}

}  // namespace

std::string Pack(Healthy const& healthy) {
    std::ostringstream out;
    out << healthy.worked << '\n' << healthy.allocations << '\n' << healthy.calls.size() << '\n';
    for (auto const& [entryPoint, count] : healthy.calls) {
        out << entryPoint << '\n' << count << '\n';
    }
    Write(out, healthy.log);
    Write(out, healthy.after);
    return out.str();
}

Healthy Unpack(std::string const& text) {
    std::istringstream in(text);
    Healthy healthy;
    healthy.worked = ReadNumber(in) != 0;
    healthy.allocations = static_cast<int>(ReadNumber(in));
    for (std::size_t left = ReadNumber(in); left > 0; --left) {
        std::string entryPoint;
        std::getline(in, entryPoint);
        healthy.calls[entryPoint] = static_cast<int>(ReadNumber(in));
    }
    healthy.log = ReadLines(in);
    healthy.after = ReadLines(in);
    return healthy;
}

}  // namespace gputune::matrix
