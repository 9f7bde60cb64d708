#pragma once

#include <TavaroMedia/Audio/MonoSound.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// A folder of a test's own.
class TestFolder {
public:
    TestFolder();
    ~TestFolder();
    TestFolder(TestFolder const&) = delete;

    std::filesystem::path operator/(std::string const& name) const { return path / name; }
    /// A program of the shell, which can be started.
    std::filesystem::path script(std::string const& name, std::string const& text) const;

    std::filesystem::path path;
};

/// About a hundred words that a person could say over a recording.
extern std::string const narration;

/// What festival's voice slt says at 48 kHz; none where it is not installed.
std::optional<MonoSound> spokenByFestival(std::string const& text, TestFolder const& folder);

void writeWAV(std::filesystem::path const& file, MonoSound const& sound);

/// Syllables of a hum with pauses: nobody's words, but like somebody speaking for who looks at levels.
MonoSound humming(double seconds);
MonoSound hiss(double seconds, float amplitude);
MonoSound silent(double seconds);
MonoSound joined(std::vector<MonoSound> const& sounds);

/// The share of words that are wrong, missing or too many.
double wordErrorRate(std::string_view said, std::string_view heard);

}
