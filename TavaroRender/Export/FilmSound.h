#pragma once

#include <TavaroMedia/Audio/StereoSample.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// The sound of the film that an export of a project writes, for who plays it: from any place at the same cost. What
/// cannot be read is silent, and told of. One thread at a time.
class FilmSound {
public:
    /// What can be heard at once, at a cost that does not grow with the film: a sound that is to be enhanced is heard
    /// as it was recorded where its enhanced file is not there yet, and nothing gives way to sounds that would have to
    /// be looked for first. `isFinal` says whether it is the export's sound all the same.
    static FilmSound draft(DemoProject const& project, ProjectPackage const& package);
    /// The export's sound, which may take minutes to make. None when `goOn`, asked now and then, said no.
    static std::optional<FilmSound> finished(DemoProject const& project, ProjectPackage const& package,
                                             std::function<bool()> const& goOn);

    FilmSound(FilmSound&&) noexcept;
    FilmSound& operator=(FilmSound&&) noexcept;
    ~FilmSound();

    bool isFinal() const;
    /// Nothing is heard at any time.
    bool isSilent() const;
    /// Whether both were made of the same: what one lacks of the export's sound aside.
    bool hasSameMix(FilmSound const& other) const;
    /// Sentences about what cannot be heard.
    std::vector<std::string> const& problems() const;

    /// Samples of the whole output from `position` on; silence outside of it.
    void render(std::int64_t position, std::span<StereoSample> samples);

private:
    struct State;
    explicit FilmSound(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

}
