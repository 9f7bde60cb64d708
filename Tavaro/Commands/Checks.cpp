#include <Tavaro/Commands/Checks.h>

#include <TavaroCore/Errors/Error.h>

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace tavaro::commands {

std::string notEmpty(std::string const& text) { return text.empty() ? "the name is empty" : ""; }

std::string endingOf(std::filesystem::path const& file) {
    auto ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

Check secondsFrom(double least, double most) {
    return [least, most](std::string const& text) -> std::string {
        double seconds = 0;
        auto const* const last = text.data() + text.size();
        auto const [end, error] = std::from_chars(text.data(), last, seconds);
        bool const isNumber = error == std::errc{} && end == last && std::isfinite(seconds);
        if (isNumber && seconds >= least && seconds <= most) return "";
        auto const range =
            std::isfinite(most) ? fmt::format("from {:g} to {:g}", least, most) : fmt::format("of {:g} or more", least);
        return fmt::format("“{}” is not a number of seconds {}", text, range);
    };
}

Check readableBy(std::function<void(std::string const&)> read) {
    return [read = std::move(read)](std::string const& text) -> std::string {
        try {
            read(text);
            return "";
        } catch (Error const& failure) {
            return failure.what();
        }
    };
}

}
