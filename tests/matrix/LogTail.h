// The lines of debug.log that were written since the last Skip or Take.
#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "Machine.h"

namespace gputune::matrix {

class LogTail {
public:
    void Skip() {
        std::error_code noFile;
        auto const size = std::filesystem::file_size("debug.log", noFile);
        position_ = noFile ? 0 : static_cast<std::streamoff>(size);
    }

    // Removes the file. The library under test must not have opened it yet.
    void Remove() {
        std::error_code noFile;
        std::filesystem::remove("debug.log", noFile);
        position_ = 0;
    }

    test::Lines Take() {
        std::streamoff const from = position_;
        Skip();
        std::ifstream file("debug.log", std::ios::binary);
        file.seekg(from);
        test::Lines lines;
        for (std::string line; std::getline(file, line);) {
            if (!line.empty() && line.back() == '\r') {
                line.pop_back();
            }
            lines.push_back(line);
        }
        return lines;
    }

private:
    std::streamoff position_ = 0;
};

}  // namespace gputune::matrix
