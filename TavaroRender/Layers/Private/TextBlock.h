#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Values/RGBAColor.h>
#include <TavaroRender/Composition/Private/CanvasGeometry.h>
#include <TavaroRender/Layers/Private/TextFonts.h>

namespace tavaro {

enum class TextAlignment { leading, centre };
enum class LineWrap { balanced, none };

/// The room that a text has. One that needs more is set smaller, down to `smallest` of its size, and cut with "…" then.
struct TextRoom {
    double width = 0; // canvas pixels
    double height = 0;
    int lines = 3;
    double smallest = 0.6;
    LineWrap wrap = LineWrap::balanced; // lines of about one length, or each paragraph a line
    TextAlignment alignment = TextAlignment::centre;
};

/// How a stretch of a text is painted.
struct TextPaint {
    RGBAColor color;
    std::optional<RGBAColor> over; // covers the first `overShare` of the stretch, in reading direction
    double overShare = 0;
    bool isShown = true;
};

/// A text set in lines. Its origin is the left end of the capitals of the first line: the box reaches from the top of
/// those to the baseline of the last line, as a designer aligns it; descenders and accents lie outside, and `area`
/// says how much room all of it takes.
class TextBlock {
public:
    /// `cuts`: bytes at which the painting may change.
    TextBlock(TextFonts& fonts, std::string text, TextStyle style, TextRoom const& room,
              std::vector<std::size_t> cuts = {});

    std::string const& text() const { return text_; }
    bool isEmpty() const { return lines_.empty(); }
    double size() const { return style_.size; } // of the letters after fitting, canvas pixels
    double capHeight() const { return capHeight_; }
    int lineCount() const { return static_cast<int>(lines_.size()); }
    /// The baseline of a line, and how far its left and right ends are from the origin.
    double baseline(int line) const { return lines_[static_cast<std::size_t>(line)].baseline; }
    double lineLeft(int line) const { return lines_[static_cast<std::size_t>(line)].x; }
    double lineRight(int line) const { return lineLeft(line) + lines_[static_cast<std::size_t>(line)].width; }

    /// The box from the capitals' top to the last baseline; grown where ink reaches further past it than Latin letters
    /// do, as that of tall scripts does.
    CanvasRect area() const { return area_; }
    /// What the glyphs cover.
    CanvasRect ink() const { return ink_; }

    using PaintOf = FunctionRef<TextPaint(std::size_t byte)>;
    /// Paints the glyphs with the block's origin at `at`; `paintOf` is asked for each stretch between cuts.
    void paint(cairo_t* cr, CanvasPoint at, PaintOf paintOf) const;
    void paint(cairo_t* cr, CanvasPoint at, RGBAColor const& color) const;
    /// Adds the outlines of the shown glyphs to the path; coloured glyphs have none.
    void trace(cairo_t* cr, CanvasPoint at, PaintOf paintOf) const;

private:
    struct Line {
        PangoLayoutLine* line = nullptr; // lives as long as the layout
        double x = 0;
        double baseline = 0;
        double width = 0;
    };

    void fit(TextFonts& fonts, TextRoom const& room);
    /// How much smaller the text should be set, 1 when it has the room that it needs.
    double shrinkage(TextRoom const& room) const;
    void balance(TextRoom const& room);
    void place(TextRoom const& room);
    /// How many pixels at the beginning of a run are covered when `share` of its stretch is.
    double covered(PangoGlyphItem const& run, double share) const;
    /// Calls `visit(run, x, baseline)` for each run in visual order.
    void eachRun(CanvasPoint at, FunctionRef<void(PangoGlyphItem*, double, double)> visit) const;

    std::string text_;
    TextStyle style_;
    std::vector<std::size_t> cuts_; // ascending
    PangoLayoutHandle layout_;
    double capHeight_ = 0;
    std::vector<Line> lines_;
    CanvasRect area_;
    CanvasRect ink_;
};

}
