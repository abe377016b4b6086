// Reading a board file (docs/board-files.md).
#pragma once

#include <string>

#include "sim/board/Board.h"
#include "sim/board/JsonReader.h"

namespace gputune::sim {

// path: UTF-8. Throws BoardFileError naming the file, the key and what was expected.
Board ReadBoardFile(std::string const& path);

// source stands for the file's name in errors.
Board ReadBoardText(std::string const& json, std::string const& source);

}  // namespace gputune::sim
