// The text file's real disk.
#pragma once

#include "tool/serve/TextFile.h"
#include "tool/system/Files.h"

namespace gputune::tool {

class DiskFiles : public TextFilePort {
public:
    // To another name, which collectors of "*.prom" do not read, and renamed over the old file.
    void Replace(std::string const& path, std::string const& text) override {
        WriteWholeFile(path, text, Existing::Replace);
    }
    void Remove(std::string const& path) override { RemoveFile(path); }
};

}  // namespace gputune::tool
