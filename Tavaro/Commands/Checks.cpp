#include <Tavaro/Commands/Checks.h>

#include <Tavaro/Model/Operations/Parameter.h>

#include <TavaroCore/Errors/Error.h>

#include <algorithm>
#include <cctype>

namespace tavaro::commands {

std::string notEmpty(std::string const& text) { return text.empty() ? "the name is empty" : ""; }

std::string endingOf(std::filesystem::path const& file) {
    auto ending = file.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), [](unsigned char c) { return std::tolower(c); });
    return ending;
}

Check secondsFrom(double least, double most) {
    return [range = NumberRange{least, most}](std::string const& text) { return numberProblem(range, text); };
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
