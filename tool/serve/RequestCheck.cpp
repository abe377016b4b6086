#include "tool/serve/RequestCheck.h"

#include <algorithm>
#include <cstdint>

namespace gputune::tool {

namespace {

constexpr std::size_t kShortestToken = 16;
constexpr std::size_t kLongestToken = 256;

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) { return Lower(c); });
    return lower;
}

bool IsSame(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

// What stands behind "<scheme> "; nothing when the value is of another scheme.
std::optional<std::string_view> Credentials(std::string_view value, std::string_view scheme) {
    if (value.size() <= scheme.size() || !IsSame(value.substr(0, scheme.size()), scheme) ||
        value[scheme.size()] != ' ') {
        return std::nullopt;
    }
    return value.substr(scheme.size() + 1);
}

std::optional<std::string> DecodeBase64(std::string_view text) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    while (text.ends_with('=')) {
        text.remove_suffix(1);
    }
    std::string decoded;
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (char const c : text) {
        std::size_t const digit = kDigits.find(c);
        if (digit == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6U | static_cast<std::uint32_t>(digit)) & 0xFFFFU;
        count += 6;
        if (count >= 8) {
            count -= 8;
            decoded += static_cast<char>(bits >> count & 0xFFU);
        }
    }
    return decoded;
}

}  // namespace

std::size_t RequestHead::Count(std::string_view name) const {
    return static_cast<std::size_t>(std::count_if(headers.begin(), headers.end(),
                                                  [name](auto const& header) { return IsSame(header.first, name); }));
}

std::optional<std::string_view> RequestHead::Only(std::string_view name) const {
    std::optional<std::string_view> value;
    for (auto const& [known, text] : headers) {
        if (IsSame(known, name)) {
            if (value) {
                return std::nullopt;
            }
            value = text;
        }
    }
    return value;
}

RequestCheck::RequestCheck(Rules rules) : rules_(std::move(rules)) {
    std::vector<std::string> names = rules_.names;
    std::string const port = ":" + std::to_string(rules_.address.port);
    std::string const address = rules_.address.Text();
    names.push_back(address.substr(0, address.size() - port.size()));
    if (rules_.address.IsLoopback()) {
        names.emplace_back("localhost");
    }
    for (std::string const& name : names) {
        hosts_.push_back(Lower(name + port));
        if (rules_.address.port == 80) {
            hosts_.push_back(Lower(name));  // a client leaves it out
        }
    }
}

bool RequestCheck::IsOwnHost(std::string_view host) const {
    if (std::find(hosts_.begin(), hosts_.end(), Lower(host)) != hosts_.end()) {
        return true;
    }
    // Of all addresses of this machine, whichever was asked for: a page of another site can only be at a name.
    std::string const port = ":" + std::to_string(rules_.address.port);
    return rules_.address.IsAny() && host.ends_with(port) &&
           IsAddressInFigures(host.substr(0, host.size() - port.size()));
}

// Takes the same time for every text of the same length.
bool RequestCheck::IsToken(std::string_view text) const {
    std::size_t difference = text.size() ^ rules_.token.size();
    for (std::size_t i = 0; i < text.size(); ++i) {
        difference |= static_cast<unsigned char>(text[i] ^ rules_.token[i % rules_.token.size()]);
    }
    return difference == 0;
}

bool RequestCheck::HasToken(RequestHead const& request) const {
    std::optional<std::string_view> const value = request.Only("Authorization");
    if (!value) {
        return false;
    }
    if (std::optional<std::string_view> const token = Credentials(*value, "Bearer")) {
        return IsToken(*token);
    }
    // What a browser asks its user for: any name, and the token as the password.
    std::optional<std::string_view> const encoded = Credentials(*value, "Basic");
    std::optional<std::string> const decoded = encoded ? DecodeBase64(*encoded) : std::nullopt;
    std::size_t const colon = decoded ? decoded->find(':') : std::string::npos;
    return colon != std::string::npos && IsToken(std::string_view(*decoded).substr(colon + 1));
}

std::optional<Refusal> RequestCheck::Refuse(RequestHead const& request) const {
    auto const refusal = [](int status, char const* reason) { return Refusal{.status = status, .reason = reason}; };
    if (request.headers.size() > kMostHeaders) {
        return refusal(431, "Too many header lines.");
    }
    if (request.target.size() > kLongestTarget) {
        return refusal(414, "The address is too long.");
    }
    if (request.version != "1.1" && request.version != "1.0") {
        return refusal(505, "HTTP/1.1 and HTTP/1.0 are understood.");
    }
    if (request.Count("Host") != 1) {
        return refusal(400, "One Host header is needed.");
    }
    std::string_view const host = *request.Only("Host");
    if (!IsOwnHost(host)) {
        return refusal(403, "The Host header does not name this server.");
    }
    if (request.Count("Origin") > 0 && request.Only("Origin") != "http://" + std::string(host)) {
        return refusal(403, "Other sites may not ask.");
    }
    if (request.Count("Sec-Fetch-Site") > 0 && request.Only("Sec-Fetch-Site") != "same-origin" &&
        request.Only("Sec-Fetch-Site") != "none") {
        return refusal(403, "Other sites may not ask.");
    }
    if (request.method != "GET" && request.method != "HEAD") {
        return refusal(405, "Only GET and HEAD are answered.");
    }
    if (request.Count("Transfer-Encoding") > 0 ||
        (request.Count("Content-Length") > 0 && request.Only("Content-Length") != "0")) {
        return refusal(400, "A request has no body here.");
    }
    // Before the token is looked at: one that stands in the address would be in histories and logs from now on.
    if (request.target.find('?') != std::string_view::npos) {
        return refusal(400, "There are no parameters. A token belongs into the Authorization header.");
    }
    if (!rules_.token.empty() && !HasToken(request)) {
        return refusal(401, "The token is needed.");
    }
    if (std::find(rules_.paths.begin(), rules_.paths.end(), request.target) == rules_.paths.end()) {
        return refusal(404, "There is nothing here.");
    }
    return std::nullopt;
}

bool IsUsableToken(std::string_view text) {
    return text.size() >= kShortestToken && text.size() <= kLongestToken &&
           std::all_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
}

}  // namespace gputune::tool
