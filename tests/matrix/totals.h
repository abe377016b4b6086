// The counts of all processes of the program, and its output.
#pragma once

#include <string>

namespace gputune::matrix {

// The kinds of cells: one for each backend, in the order of test::Backend, and two more.
constexpr int kMemoryCells = 4;
constexpr int kForwardingCells = 5;
constexpr int kKinds = 6;

struct Totals {
    int cells[kKinds];  // that there are
    int tried;
    int red;
};

// Lets all processes that are started from here on count together.
void ShareTotals();
Totals& SharedTotals();

// Prints to the program's standard output, also from a child whose own output goes to a file.
void Say(std::string const& text);

// Prints and counts a red cell.
void Report(std::string const& name, std::string const& what);

// Prints the totals; false when there are fewer cells of a kind than there have to be.
bool PrintTotals();

}  // namespace gputune::matrix
