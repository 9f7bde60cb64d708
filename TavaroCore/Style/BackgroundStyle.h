#pragma once

#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Values/Geometry.h>
#include <TavaroCore/Values/RGBAColor.h>

#include <array>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavaro {

/// The two ends of a gradient, mixed in linear light.
struct Gradient {
    RGBAColor from = RGBAColor::rgb(0x4F46E5);
    RGBAColor to = RGBAColor::rgb(0x9333EA);

    static constexpr auto fields = std::tuple{
        field("from", &Gradient::from),
        field("to", &Gradient::to),
    };
    bool operator==(Gradient const&) const = default;
};
static_assert(listsEveryField<Gradient>);

/// What each kind of background carries.
namespace BackgroundContent {

struct Solid {
    RGBAColor colour = RGBAColor::rgb(0x1E1F26);

    static constexpr auto fields = std::tuple{
        field("colour", &Solid::colour),
    };
    bool operator==(Solid const&) const = default;
};
static_assert(listsEveryField<Solid>);

struct LinearGradient {
    Gradient gradient;
    double angle = 135; // degrees clockwise from "to the right"

    static constexpr auto fields = std::tuple{
        field("gradient", &LinearGradient::gradient),
        field("angle", &LinearGradient::angle),
    };
    bool operator==(LinearGradient const&) const = default;
};
static_assert(listsEveryField<LinearGradient>);

struct RadialGradient {
    Gradient gradient;
    UnitPoint2 center = UnitPoint2::center;

    static constexpr auto fields = std::tuple{
        field("gradient", &RadialGradient::gradient),
        field("center", &RadialGradient::center),
    };
    bool operator==(RadialGradient const&) const = default;
};
static_assert(listsEveryField<RadialGradient>);

struct Mesh {
    std::vector<RGBAColor> colors; // top-left, top-right, bottom-left, bottom-right
    double speed = 0;              // 0 holds it still
    double seed = 0;               // another seed, another shape

    static constexpr auto fields = std::tuple{
        field("colors", &Mesh::colors),
        field("speed", &Mesh::speed),
        field("seed", &Mesh::seed),
    };
    bool operator==(Mesh const&) const = default;
};
static_assert(listsEveryField<Mesh>);

struct Aurora {
    std::vector<RGBAColor> colors; // three bands
    double speed = 0.2;            // 0 holds it still
    double seed = 0;

    static constexpr auto fields = std::tuple{
        field("colors", &Aurora::colors),
        field("speed", &Aurora::speed),
        field("seed", &Aurora::seed),
    };
    bool operator==(Aurora const&) const = default;
};
static_assert(listsEveryField<Aurora>);

struct ImageFile {
    std::string assetName;
    double blur = 0; // radius in pixels at a canvas whose smaller side is 1080

    static constexpr auto fields = std::tuple{
        field("assetName", &ImageFile::assetName),
        field("blur", &ImageFile::blur),
    };
    bool operator==(ImageFile const&) const = default;
};
static_assert(listsEveryField<ImageFile>);

struct None {

    static constexpr std::tuple<> fields{};
    bool operator==(None const&) const = default;
};

}

/// What fills the canvas behind the screen; each case carries its parameters.
struct BackgroundStyle {
    using Solid = BackgroundContent::Solid;
    using LinearGradient = BackgroundContent::LinearGradient;
    using RadialGradient = BackgroundContent::RadialGradient;
    using Mesh = BackgroundContent::Mesh;
    using Aurora = BackgroundContent::Aurora;
    using ImageFile = BackgroundContent::ImageFile;
    using None = BackgroundContent::None;

    std::variant<Solid, LinearGradient, RadialGradient, Mesh, Aurora, ImageFile, None> content = None{};

    static constexpr std::array<std::string_view, 7> caseNames{
        "solid", "linearGradient", "radialGradient", "mesh", "aurora", "image", "none"};
    /// The bare default: nothing behind the screen.
    bool isNone() const { return std::holds_alternative<None>(content); }
    std::string_view displayName() const;
    bool operator==(BackgroundStyle const&) const = default;
};

}
