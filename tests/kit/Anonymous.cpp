#include "Anonymous.h"

#include <windows.h>

#include <algorithm>
#include <cctype>

#include "sim/standin/wide_text.h"

namespace gputune::kit {

namespace {

// Windows compares paths and names without case; beyond ASCII a text is compared as it is.
char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return Lower(c); });
    return text;
}

bool IsOfAWord(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || static_cast<unsigned char>(c) >= 0x80;
}

std::string Replaced(std::string const& text, std::string const& secret, std::string const& by, bool isWord) {
    std::string const lower = Lower(text);
    std::string clean;
    std::size_t from = 0;
    for (std::size_t at = lower.find(secret); at != std::string::npos; at = lower.find(secret, at)) {
        std::size_t const end = at + secret.size();
        if (isWord && ((at > 0 && IsOfAWord(text[at - 1])) || (end < text.size() && IsOfAWord(text[end])))) {
            ++at;
            continue;
        }
        clean += text.substr(from, at - from) + by;
        from = at = end;
    }
    return clean + text.substr(from);
}

std::wstring Variable(wchar_t const* name) {
    wchar_t const* const value = ::_wgetenv(name);
    return value == nullptr ? L"" : value;
}

// The form of a path whose names have eight characters at most; the path itself where there is none.
std::filesystem::path ShortForm(std::filesystem::path const& path) {
    std::wstring form(32768, L'\0');
    DWORD const length = ::GetShortPathNameW(path.c_str(), form.data(), static_cast<DWORD>(form.size()));
    form.resize(length < form.size() ? length : 0);
    return form.empty() ? path : std::filesystem::path(form);
}

}  // namespace

Anonymous::Anonymous(std::filesystem::path const& kit) {
    HidePath(kit, "<kit>");
    HidePath(Variable(L"USERPROFILE"), "<user's folder>");
    wchar_t name[256];
    DWORD size = static_cast<DWORD>(std::size(name));
    if (::GetUserNameW(name, &size)) {
        HideName(name, "<user>");
    }
    HideName(Variable(L"USERNAME"), "<user>");
    for (COMPUTER_NAME_FORMAT const format :
         {ComputerNameDnsFullyQualified, ComputerNameDnsHostname, ComputerNameNetBIOS}) {
        size = static_cast<DWORD>(std::size(name));
        if (::GetComputerNameExW(format, name, &size)) {
            HideName(name, "<machine>");
        }
    }
    // The longer first: one may be a part of another.
    std::stable_sort(secrets_.begin(), secrets_.end(),
                     [](Secret const& a, Secret const& b) { return a.text.size() > b.text.size(); });
}

std::string Anonymous::Text(std::string const& text) const {
    std::string clean = text;
    for (Secret const& secret : secrets_) {
        clean = Replaced(clean, secret.text, secret.by, secret.isWord);
    }
    return clean;
}

void Anonymous::Clean(nlohmann::ordered_json& value) const {
    if (value.is_string()) {
        value = Text(value.get<std::string>());
    } else if (value.is_structured()) {
        std::for_each(value.begin(), value.end(), [this](nlohmann::ordered_json& part) { Clean(part); });
    }
}

void Anonymous::HidePath(std::filesystem::path const& path, std::string const& by) {
    if (path.relative_path().empty()) {
        return;
    }
    for (std::filesystem::path const& form : {path, ShortForm(path)}) {
        std::string text = Lower(sim::FromWide(form.wstring()));
        // As programs print it, as some libraries do, and as a text in C or JSON has it.
        secrets_.push_back({text, by, false});
        std::string doubled;
        for (char const c : text) {
            doubled.append(c == '\\' ? 2 : 1, c);
        }
        secrets_.push_back({doubled, by, false});
        std::replace(text.begin(), text.end(), '\\', '/');
        secrets_.push_back({text, by, false});
    }
}

void Anonymous::HideName(std::wstring const& name, std::string const& by) {
    if (!name.empty()) {
        secrets_.push_back({Lower(sim::FromWide(name)), by, true});
    }
}

}  // namespace gputune::kit
