#pragma once

#include <TavaroCore/Records/Fields.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// A colour in the encoded (sRGB) domain with straight alpha, each 0…1.
struct RGBAColor {
    double r = 0;
    double g = 0;
    double b = 0;
    double a = 1;

    static const RGBAColor black;
    static const RGBAColor white;
    static const RGBAColor clear;

    /// "#RRGGBB"; alpha is not written.
    std::string hex() const;
    /// Reads six hexadecimal digits, with or without "#"; alpha becomes 1.
    static std::optional<RGBAColor> fromHex(std::string_view text);
    /// For colours written in the code: 0xRRGGBB.
    static constexpr RGBAColor rgb(unsigned code, double alpha = 1) {
        return {((code >> 16) & 255) / 255.0, ((code >> 8) & 255) / 255.0, (code & 255) / 255.0, alpha};
    }

    static constexpr auto fields = std::tuple{field("r", &RGBAColor::r), field("g", &RGBAColor::g),
                                              field("b", &RGBAColor::b), field("a", &RGBAColor::a)};
    bool operator==(RGBAColor const&) const = default;
};
static_assert(listsEveryField<RGBAColor>);

inline constexpr RGBAColor RGBAColor::black{0, 0, 0, 1};
inline constexpr RGBAColor RGBAColor::white{1, 1, 1, 1};
inline constexpr RGBAColor RGBAColor::clear{0, 0, 0, 0};

}
