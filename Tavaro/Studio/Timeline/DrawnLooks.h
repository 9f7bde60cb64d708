#pragma once

#include <QColor>
#include <QImage>
#include <cmath>
#include <compare>
#include <map>
#include <string>
#include <tuple>

namespace tavaro {

/// How a box with round corners looks.
struct BoxLook {
    QColor fill;
    QColor edge;
    double radius = 4; // points
    double edgeWidth = 1;

    /// From the box's sides to what may be stretched.
    double border() const { return std::ceil(radius + edgeWidth); }
};

struct TextLook {
    std::string text;
    std::string face;
    double size = 11; // points of the window
    bool isStrong = false;
    QRgb color = 0;
    int widest = 480; // points; longer text ends in an ellipsis

    auto operator<=>(TextLook const&) const = default;
};

/// Small graphics that no rectangle can show.
struct ShapeLook {
    enum class Form {
        playhead,
        aboveRampIn, // what a zoom's way in leaves of its box
        aboveRampOut,
        folded, // a lane's arrow
        unfolded,
        cross, // of what is taken out
    };
    Form form = Form::playhead;
    QRgb color = 0;
    int width = 0; // points
    int height = 0;

    auto operator<=>(ShapeLook const&) const = default;
};

/// Texts, boxes and shapes as pictures of the window's pixels, kept while they are in use. One thread.
class DrawnLooks {
public:
    void setPixelRatio(double ratio);
    double pixelRatio() const { return ratio_; }

    /// As wide as the text.
    QImage text(TextLook const& look);
    /// As high as that in points, and wide enough for both ends with a column between.
    QImage box(BoxLook const& look, double height);
    QImage shape(ShapeLook const& look);

    /// Drops what was not used since the last time, where there are many.
    void paintEnds();

private:
    struct Kept {
        QImage picture;
        bool isUsed = false;
    };

    double ratio_ = 1;
    std::map<TextLook, Kept> texts_;
    std::map<std::tuple<QRgb, QRgb, double, double, double>, Kept> boxes_;
    std::map<ShapeLook, QImage> shapes_;
};

}
