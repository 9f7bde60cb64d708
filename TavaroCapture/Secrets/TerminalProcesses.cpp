#include <TavaroCapture/Secrets/Private/TerminalProcesses.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <array>
#include <cctype>
#include <cstdio>
#include <map>
#include <optional>
#include <string_view>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

/// /dev/pts has the device numbers 136:0 to 143:2²⁰−1.
int terminalNumber(int device) {
    constexpr int first = 136, last = 143;
    int const major = device >> 8 & 0xfff;
    int const minor = (device & 0xff) | (device >> 12 & 0xfff00);
    return major < first || major > last ? -1 : (major - first) * 256 + minor;
}

/// "4711 (name) S 1 4711 4711 34816 4712 …"
std::optional<TerminalProcess> parseProcess(std::string_view text) {
    auto const open = text.find('('), close = text.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos) return std::nullopt;
    TerminalProcess result{.name = std::string(text.substr(open + 1, close - open - 1))};
    int device = 0;
    if (std::sscanf(std::string(text).c_str(), "%d", &result.id) != 1 ||
        std::sscanf(std::string(text.substr(close + 1)).c_str(), " %*c %d %d %*d %d %d", &result.parent, &result.group,
                    &device, &result.foreground) != 4)
        return std::nullopt;
    result.terminal = terminalNumber(device);
    return result;
}

}

std::vector<TerminalProcess> runningProcesses(fs::path const& folder) {
    std::vector<TerminalProcess> result;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(folder, ignored)) {
        if (!std::isdigit(static_cast<unsigned char>(entry.path().filename().string().front()))) continue;
        std::array<std::byte, 512> bytes{};
        auto const file = FileDescriptor::open(entry.path() / "stat", FileDescriptor::Opening::reading);
        auto const count = file.isOpen() ? file.read(bytes) : 0;
        if (count <= 0) continue; // it has ended
        auto const* const text = reinterpret_cast<char const*>(bytes.data());
        if (auto process = parseProcess({text, static_cast<std::size_t>(count)})) result.push_back(std::move(*process));
    }
    return result;
}

std::vector<TerminalProcess const*> startedBy(int process, std::vector<TerminalProcess> const& all) {
    std::multimap<int, TerminalProcess const*> byParent;
    for (auto const& one : all) byParent.emplace(one.parent, &one);
    std::vector<TerminalProcess const*> result;
    auto const add = [&](int parent) {
        for (auto [at, end] = byParent.equal_range(parent); at != end; ++at) result.push_back(at->second);
    };
    add(process);
    for (std::size_t i = 0; i < result.size(); ++i) add(result[i]->id);
    return result;
}

}
