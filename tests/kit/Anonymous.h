// Takes out of texts what tells who ran the kit: the user's and the machine's name, and the paths of the kit and of the
// user's own folders.
#pragma once

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

namespace gputune::kit {

class Anonymous {
public:
    // Looks at this process's user and machine.
    explicit Anonymous(std::filesystem::path const& kit);

    // Also names and paths in other capitals; names only as whole words.
    std::string Text(std::string const& text) const;
    // The same with every text that is a value in it.
    void Clean(nlohmann::ordered_json& value) const;

private:
    void HidePath(std::filesystem::path const& path, std::string const& by);
    void HideName(std::wstring const& name, std::string const& by);

    struct Secret {
        std::string text;
        std::string by;
        bool isWord;
    };
    std::vector<Secret> secrets_;
};

}  // namespace gputune::kit
