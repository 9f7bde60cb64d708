#include <Tavaro/Studio/Settings/PackagePolicy.h>

#include <algorithm>

namespace tavaro {

namespace {

std::string_view trimmed(std::string_view text) {
    auto const from = text.find_first_not_of(' ');
    return from == std::string_view::npos ? std::string_view() : text.substr(from);
}

std::string version(std::string_view line, std::string_view name) {
    auto const value = trimmed(line.substr(name.size()));
    return value == "(none)" ? std::string() : std::string(value);
}

/// "500 http://deb.debian.org/debian bookworm/main amd64 Packages": where a version comes from.
bool isSource(std::string_view line) {
    auto const place = trimmed(line.substr(std::min(line.find(' '), line.size())));
    return place.find(":/") != std::string_view::npos;
}

}

PackagePolicy packagePolicy(std::string_view text) {
    constexpr std::string_view installed = "Installed:", candidate = "Candidate:";
    PackagePolicy policy;
    while (!text.empty()) {
        auto const end = std::min(text.find('\n'), text.size());
        auto const line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with(installed)) policy.installed = version(line, installed);
        if (line.starts_with(candidate)) policy.candidate = version(line, candidate);
        policy.isOffered = policy.isOffered || isSource(line);
    }
    return policy;
}

std::string packageOf(std::string_view text) {
    auto const line = text.substr(0, text.find('\n'));
    if (line.starts_with("diversion ")) return {};
    return std::string(line.substr(0, line.find_first_of(":,")));
}

}
