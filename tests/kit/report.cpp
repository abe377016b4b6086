#include "report.h"

#include <algorithm>
#include <sstream>

namespace gputune::kit {

namespace {

using Json = nlohmann::ordered_json;

// The beginning and the end, where the reasons are.
std::string Shortened(std::string const& text) {
    constexpr std::size_t kPart = 6000;
    if (text.size() <= 2 * kPart) {
        return text;
    }
    // Not within a character of several bytes.
    auto const isInside = [&](std::size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U; };
    std::size_t head = kPart;
    std::size_t tail = text.size() - kPart;
    while (isInside(head)) {
        --head;
    }
    while (tail < text.size() && isInside(tail)) {
        ++tail;
    }
    return text.substr(0, head) + "\n[...]\n" + text.substr(tail);
}

std::string Text(Json const& value) {
    return value.is_string() ? value.get<std::string>() : value.dump();
}

void WriteIndented(std::ostream& out, std::string const& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        out << "    " << line << "\n";
    }
}

void WriteFields(std::ostream& out, Json const& object) {
    for (auto const& [name, value] : object.items()) {
        out << "  " << name << ": " << Text(value) << "\n";
    }
}

void WriteList(std::ostream& out, char const* title, Json const& list) {
    out << "\n" << title << "\n";
    for (Json const& entry : list) {
        char const* separator = "  ";
        for (auto const& [name, value] : entry.items()) {
            out << separator << name << ": " << Text(value);
            separator = ", ";
        }
        out << "\n";
    }
    if (list.empty()) {
        out << "  none\n";
    }
}

void WriteCases(std::ostream& out, Json const& cases) {
    out << "\nWhat did not pass\n";
    bool hasAny = false;
    for (Json const& entry : cases) {
        if (entry["outcome"] == "passed") {
            continue;
        }
        hasAny = true;
        out << "  " << Text(entry["outcome"]) << ": " << Text(entry["program"]) << " " << Text(entry["name"])
            << " (exit code " << Text(entry["exitCode"]) << ", " << Text(entry["seconds"]) << " s)\n";
        if (entry.contains("output")) {
            WriteIndented(out, Text(entry["output"]));
        }
    }
    if (!hasAny) {
        out << "  nothing\n";
    }
}

void WriteBoard(std::ostream& out, Json const& board) {
    out << "\nThis machine's own board, which was only read\n";
    for (Json const& reading : board) {
        out << "  gputunectl " << Text(reading["command"]) << ", " << Text(reading["width"]) << " bits: exit code "
            << Text(reading["exitCode"]) << (reading["timedOut"].get<bool>() ? ", timed out" : "") << "\n";
        WriteIndented(out, reading["answer"].is_string() ? Text(reading["answer"]) : reading["answer"].dump(2));
        WriteIndented(out, Text(reading["messages"]));
        if (!Text(reading["log"]).empty()) {
            out << "  its log\n";
            WriteIndented(out, Text(reading["log"]));
        }
    }
    if (board.empty()) {
        out << "  not asked (--no-board)\n";
    }
}

}  // namespace

Sum SumOf(std::vector<Result> const& results) {
    Sum sum;
    for (Result const& result : results) {
        ++(IsBad(result.outcome) ? sum.failed : result.outcome == Outcome::Skipped ? sum.skipped : sum.passed);
    }
    return sum;
}

Json CaseFacts(Result const& result) {
    constexpr double kMilliseconds = 1000;
    Json facts = {{"program", result.which.program->file},
                  {"width", result.which.program->width},
                  {"name", result.which.name},
                  {"outcome", NameOf(result.outcome)},
                  {"exitCode", result.ended.exitCode},
                  {"seconds", static_cast<int>(result.ended.seconds * kMilliseconds) / kMilliseconds}};
    if (result.outcome != Outcome::Passed) {
        facts["output"] = Shortened(result.ended.output + result.ended.messages);
    }
    return facts;
}

std::string JsonText(Json const& report) {
    std::ostringstream out;
    char const* separator = "{\n";
    for (auto const& [name, value] : report.items()) {
        out << separator << "  " << Json(name).dump() << ": ";
        separator = ",\n";
        if (value.is_array() && !value.empty()) {
            char const* next = "[\n";
            for (Json const& entry : value) {
                out << next << "    " << entry.dump();
                next = ",\n";
            }
            out << "\n  ]";
        } else {
            out << value.dump();
        }
    }
    out << "\n}\n";
    return out.str();
}

std::string PlainText(Json const& report) {
    std::ostringstream out;
    out << "Report of the test kit of gputune " << Text(report["version"]) << ", " << Text(report["started"]) << "\n\n"
        << "  " << report["sum"]["passed"] << " passed, " << report["sum"]["failed"] << " failed, "
        << report["sum"]["skipped"] << " skipped, in " << report["seconds"] << " s\n\nWindows\n";
    WriteFields(out, report["windows"]);
    out << "  processes at a time: " << report["jobs"]
        << "\n  with an administrator's rights: " << report["administrator"] << "\n";
    WriteList(out, "Display drivers", report["drivers"]);
    WriteList(out, "Vendors' libraries", report["libraries"]);
    WriteCases(out, report["cases"]);
    WriteBoard(out, report["board"]);
    WriteList(out, "What the kit leaves out", report["leftOut"]);
    return out.str();
}

}  // namespace gputune::kit
