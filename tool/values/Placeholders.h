// Texts with blanks to fill in. Independent of the operating system.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace gputune::tool {

// Puts the texts in the place of their {{names}}; every name must have one. What is put in is not looked at again.
inline std::string FillForm(std::string_view form, std::map<std::string_view, std::string_view> const& texts) {
    std::string filled;
    for (;;) {
        std::size_t const start = form.find("{{");
        std::size_t const end = form.find("}}", start);
        if (end == std::string_view::npos) {
            return filled.append(form);
        }
        filled.append(form.substr(0, start)).append(texts.at(form.substr(start + 2, end - start - 2)));
        form.remove_prefix(end + 2);
    }
}

}  // namespace gputune::tool
