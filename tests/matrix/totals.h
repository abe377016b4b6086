// What the program's processes find, counted together.
#pragma once

#include <string>

namespace gputune::matrix {

struct Totals {
    int cells[4];  // that there are, by backend
    int memoryCells;
    int forwardingCells;
    int tried;
    int red;
};

// Before the first process: where all of them count.
void ShareTotals();
Totals& SharedTotals();

// A line for whoever started the program, whatever became of the process's own output.
void Say(std::string const& text);

// A red cell, and what is wrong with it.
void Report(std::string const& name, std::string const& what);

// Prints the numbers of cells; false when there are fewer of a kind than there were.
bool PrintTotals();

}  // namespace gputune::matrix
