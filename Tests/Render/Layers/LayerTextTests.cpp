#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

#include <gmock/gmock.h>

#include "LayerFrame.h"
#include <TavaroRender/Layers/Private/LayerError.h>
#include <TavaroRender/Layers/Private/LayerRasterizer.h>
#include <TavaroRender/Layers/Private/LayerSpec.h>

namespace tavaro {

namespace {

LayerSpec lookOf(LayerSpec::Kind kind) { return {.kind = std::move(kind)}; }

LayerSpec captionOf(std::string text, CaptionStyle style) {
    return {.kind = LayerSpec::Caption{.text = std::move(text), .style = style}, .fontSize = 42};
}

/// Pixels that are as red as the text of the test, and nothing else is.
CanvasRect redOf(Image const& image) {
    Image red(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            auto const* p = image.row(y) + 4 * x;
            red.row(y)[4 * x + 3] = p[0] > 90 && p[1] < 40 && p[2] < 40 ? 255 : 0;
        }
    }
    return inkOf(red);
}

std::vector<LayerSpec::Kind> kindsWith(std::string const& text) {
    return {LayerSpec::Title{text, text}, LayerSpec::Callout{text},    LayerSpec::Keycap{{text, text}},
            LayerSpec::Command{text},     LayerSpec::Code{text, text}, LayerSpec::Caption{.text = text},
            LayerSpec::Watermark{text}};
}

}

TEST(LayerText, everyScriptIsDrawnByAFontThatHasIt) {
    LayerRasterizer rasterizer;
    for (char const* text : {"Latin", "日本語", "录制", "화면", "مرحبا", "שלום", "नमस्ते", "ภาษา", "Ελλ", "⌘⇧⌥⌃↩⌫⇥⎋↑"}) {
        auto const layer = rasterizer.drawn(captionOf(text, CaptionStyle::minimal));
        ASSERT_TRUE(layer.texture) << text;
        auto const ink = inkOf(*layer.texture);
        EXPECT_GT(ink.width, 20) << text;
        EXPECT_GT(ink.height, 15) << text;
    }
    auto const emoji = rasterizer.drawn(captionOf("🎉", CaptionStyle::minimal));
    int coloured = 0;
    for (int y = 0; y < emoji.texture->height(); ++y) {
        for (int x = 0; x < emoji.texture->width(); ++x) {
            auto const* p = emoji.texture->row(y) + 4 * x;
            coloured += std::abs(p[0] - p[2]) > 60;
        }
    }
    EXPECT_GT(coloured, 100);
}

TEST(LayerText, noLetterLeavesItsPanel) {
    LayerRasterizer rasterizer;
    std::string const longWord(90, 'W');
    for (std::string const& text :
         {std::string("gjpqy"), std::string("ÅÉṨ Ǻ"), std::string("one\ntwo\nthree"), std::string("漢字かな交じり文"),
          longWord, std::string("सर्वोच्च"),
          std::string("a long callout that has to be broken into several lines to be read at all")}) {
        for (auto const& kind : kindsWith(text)) {
            for (double const size : {12.0, 36.0, 400.0}) {
                auto look = lookOf(kind);
                look.fontSize = size;
                look.color = RGBAColor::rgb(0xFF0000);
                look.background = RGBAColor::black;
                auto const layer = rasterizer.drawn(look);
                ASSERT_TRUE(layer.texture);
                auto const red = redOf(*layer.texture);
                if (red.isEmpty()) continue;
                EXPECT_GE(red.x, layer.body.x + 1) << kind.index() << " " << text << " " << size;
                EXPECT_GE(red.y, layer.body.y + 1) << kind.index() << " " << text << " " << size;
                EXPECT_LE(red.maxX(), layer.body.maxX() - 1) << kind.index() << " " << text << " " << size;
                EXPECT_LE(red.maxY(), layer.body.maxY() - 1) << kind.index() << " " << text << " " << size;
            }
        }
    }
}

TEST(LayerText, wordsThatAppearDoNotMoveThoseBeforeThem) {
    LayerRasterizer rasterizer;
    std::string const text =
        "The first words of a caption that is long enough to be broken into two lines of text here";
    for (auto const style :
         {CaptionStyle::minimal, CaptionStyle::creator, CaptionStyle::karaoke, CaptionStyle::developer}) {
        auto const whole = rasterizer.drawn(captionOf(text, style));
        auto part = captionOf(text, style);
        std::get<LayerSpec::Caption>(part.kind).shownBytes = 20; // "The first words of a"
        auto const layer = rasterizer.drawn(part);
        ASSERT_EQ(layer.texture->width(), whole.texture->width());
        ASSERT_EQ(layer.texture->height(), whole.texture->height());
        // The upper left of the bitmap has only words that are shown, far from the shadows of the others.
        int differing = 0, inked = 0;
        for (int y = 0; y < layer.texture->height() / 3; ++y) {
            for (int i = 0; i < 4 * layer.texture->width() / 5; ++i) {
                differing += std::abs(layer.texture->row(y)[i] - whole.texture->row(y)[i]) > 1;
                inked += whole.texture->row(y)[i] > 200;
            }
        }
        EXPECT_EQ(differing, 0) << static_cast<int>(style);
        EXPECT_GT(inked, 500) << static_cast<int>(style);
    }
}

TEST(LayerText, typedLettersStandWhereTheyStandInTheEnd) {
    LayerRasterizer rasterizer;
    for (auto const& kind : kindsWith("Typed letters")) {
        auto look = lookOf(kind);
        look.color = RGBAColor::rgb(0xFF0000);
        look.background = RGBAColor::black;
        auto const whole = rasterizer.drawn(look);
        double right = 0;
        for (int shown = 1; shown <= 13; shown += 3) {
            look.shownCharacters = shown;
            auto const layer = rasterizer.drawn(look);
            if (!layer.texture) continue;
            ASSERT_EQ(layer.body, whole.body);
            auto const red = redOf(*layer.texture);
            EXPECT_GE(red.maxX(), right) << kind.index();
            right = red.maxX();
        }
        EXPECT_LE(right, redOf(*whole.texture).maxX());
    }
}

TEST(LayerText, rightToLeftTextBeginsOnTheRight) {
    LayerRasterizer rasterizer;
    auto look = captionOf("اختبار للترجمة على الشاشة", CaptionStyle::minimal);
    auto const whole = rasterizer.drawn(look);
    std::get<LayerSpec::Caption>(look.kind).shownBytes = 12; // the first word
    auto const first = rasterizer.drawn(look);
    EXPECT_NEAR(inkOf(*first.texture).maxX(), inkOf(*whole.texture).maxX(), 1);
    EXPECT_GT(inkOf(*first.texture).x, whole.body.center().x);
}

TEST(LayerText, onlyTheSpokenWordIsLit) {
    LayerRasterizer rasterizer;
    for (auto const style : {CaptionStyle::minimal, CaptionStyle::creator, CaptionStyle::developer}) {
        auto look = captionOf("one two six", style);
        look.highlightColor = RGBAColor::rgb(0xFF0000);
        EXPECT_TRUE(redOf(*rasterizer.drawn(look).texture).isEmpty());
        auto& caption = std::get<LayerSpec::Caption>(look.kind);
        double last = 0;
        for (std::size_t const begin : {0, 4, 8}) {
            caption.spokenBegin = begin;
            caption.spokenEnd = begin + 3;
            auto const layer = rasterizer.drawn(look);
            auto const lit = redOf(*layer.texture);
            EXPECT_GT(lit.x, last) << nameOf(style);
            EXPECT_LT(lit.width, layer.body.width / 2) << nameOf(style);
            last = lit.maxX();
        }
    }
}

TEST(LayerText, blankTextsDrawNothing) {
    LayerRasterizer rasterizer;
    for (char const* text : {"", "   ", "\n\t", "\x01\x02", "\xE2\x80\xA8"}) {
        for (auto const& kind : kindsWith(text)) EXPECT_FALSE(rasterizer.drawn(lookOf(kind)).texture) << kind.index();
    }
    EXPECT_FALSE(rasterizer.drawn(lookOf(LayerSpec::Keycap{})).texture);
}

TEST(LayerText, absurdSpecsAreDrawnWithinAFewCanvases) {
    LayerRasterizer rasterizer;
    std::string marks = "Z";
    for (int i = 0; i < 2000; ++i) marks += "\xCC\x81";
    std::string lines;
    for (int i = 0; i < 5000; ++i) lines += "x\n";
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (std::string const& text :
         {std::string(10000, 'a'), std::string(10000, '('), lines, marks, std::string("\xFF\xFE\xC0\x80 \xED\xA0\x80"),
          std::string("a\0b", 3), std::string("\"`'/*<!--")}) {
        for (auto const& kind : kindsWith(text)) {
            for (double const size : {0.0, text.size() == 10000 ? nan : 5000.0}) {
                auto look = lookOf(kind);
                look.fontSize = size;
                look.canvasWidth = 640;
                look.canvasHeight = 360;
                auto const layer = rasterizer.drawn(look);
                if (!layer.texture) continue;
                EXPECT_LE(layer.texture->width() * layer.texture->height(), 4 * 640 * 360)
                    << kind.index() << " " << size;
                EXPECT_LE(layer.body.width, 640) << kind.index() << " " << size;
                EXPECT_LE(layer.body.height, 360) << kind.index() << " " << size;
            }
        }
    }
    for (CanvasPoint const end : {CanvasPoint{nan, 0}, {1e300, 5}, {-1e9, 1e9}, {100, 100}}) {
        auto const layer = rasterizer.drawn(lookOf(LayerSpec::Arrow{{100, 100}, end}));
        EXPECT_FALSE(layer.texture) << end.x;
    }
}

/// Draws with the fonts of `folder` alone; the process's list of fonts is read once, so in a process of its own.
static void drawWithFontsOf(std::filesystem::path const& folder) {
    auto const config = std::filesystem::path(testing::TempDir()) / "layer-fonts.conf";
    std::ofstream(config) << "<fontconfig><dir>" << folder.string() << "</dir></fontconfig>";
    setenv("FONTCONFIG_FILE", config.c_str(), 1);
    LayerRasterizer rasterizer;
    try {
        auto const layer = rasterizer.drawn(captionOf("Text 日本語", CaptionStyle::creator));
        std::exit(inkOf(*layer.texture).isEmpty() ? 1 : 0);
    } catch (LayerError const& error) {
        std::fputs(error.what(), stderr);
        std::exit(error.kind() == LayerError::Kind::noFonts ? 2 : 3);
    }
}

TEST(LayerTextDeathTest, otherFontsStandInAndAComputerWithoutAnySaysSo) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(drawWithFontsOf("/usr/share/fonts/truetype/dejavu"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(drawWithFontsOf("/nowhere"), testing::ExitedWithCode(2), "because this computer has no fonts");
}

TEST(LayerText, linesOfAWrappedTextAreOfAboutOneLength) {
    LayerRasterizer rasterizer;
    auto look = captionOf("Open the dashboard and pick the project that you would like to record and to share today",
                          CaptionStyle::developer);
    look.color = RGBAColor::rgb(0xFF0000);
    auto const layer = rasterizer.drawn(look);
    auto const lineOf = [&](int begin) { // of two
        int const height = layer.texture->height() / 2;
        Image half(layer.texture->width(), height);
        for (int y = 0; y < height; ++y) {
            std::copy_n(layer.texture->row(begin * height + y), 4 * half.width(), half.row(y));
        }
        return redOf(half);
    };
    EXPECT_GT(layer.body.height, 100); // two lines
    double const first = lineOf(0).width;
    double const second = lineOf(1).width;
    EXPECT_GT(std::min(first, second) / std::max(first, second), 0.8);
}

namespace {

/// A layer over a page of one grey.
std::vector<double> overPage(Image const& layer, double page) {
    std::vector<double> greens;
    for (int y = 0; y < layer.height(); ++y)
        for (int x = 0; x < layer.width(); ++x) {
            auto const* p = layer.row(y) + 4 * x;
            greens.push_back(p[1] + page * (255 - p[3]) / 255);
        }
    return greens;
}

/// How many pixels are at least so much lighter or darker than the page.
int standingOut(Image const& layer, double page, double difference) {
    auto const greens = overPage(layer, page);
    return static_cast<int>(std::ranges::count_if(greens, [&](double v) { return std::abs(v - page) >= difference; }));
}

}

TEST(LayerText, arrowsAndBoxesOfAPagesOwnColourStandOutFromIt) {
    LayerRasterizer rasterizer;
    std::vector<LayerSpec::Kind> const shapes{LayerSpec::Arrow{{300, 500}, {700, 300}},
                                              LayerSpec::Box{.width = 300, .height = 200}};
    for (auto const& kind : shapes) {
        for (double const grey : {1.0, 0.0}) {
            for (double const size : {20.0, 36.0, 60.0}) {
                auto look = lookOf(kind);
                look.fontSize = size;
                look.color = {grey, grey, grey, 1};
                auto const layer = rasterizer.drawn(look);
                EXPECT_GT(standingOut(*layer.texture, 255 * grey, 100), 600) << kindName(look) << " " << grey << size;
            }
        }
    }
}

TEST(LayerText, thePagesOwnTextIsNotReadThroughOneThatLiesOnIt) {
    LayerRasterizer rasterizer;
    std::vector<LayerSpec::Kind> texts{LayerSpec::Title{"Orders at a glance", "A tour in two minutes"},
                                       LayerSpec::Title{"", "A tour in two minutes"}};
    for (auto const style : allCases<CaptionStyle>())
        texts.push_back(LayerSpec::Caption{.text = "Every number on this page", .style = style});
    for (auto const& kind : texts) {
        for (auto const& color : {RGBAColor::white, RGBAColor::black}) {
            auto look = lookOf(kind);
            look.color = color;
            auto const layer = rasterizer.drawn(look);
            auto const black = overPage(*layer.texture, 0);
            auto const white = overPage(*layer.texture, 255);
            // Round the body's middle line, where the letters are: what is left of the difference of ink and paper.
            auto const& body = layer.body;
            double left = 0;
            int count = 0;
            for (int y = 0; y < layer.texture->height(); ++y)
                for (int x = 0; x < layer.texture->width(); ++x) {
                    if (std::abs(x - body.center().x) > 0.3 * body.width ||
                        std::abs(y - body.center().y) > 0.3 * body.height)
                        continue;
                    auto const i = static_cast<std::size_t>(y * layer.texture->width() + x);
                    left += white[i] - black[i];
                    ++count;
                }
            EXPECT_LT(left / count / 255, 0.2) << kindName(look) << " " << color.r;
        }
    }
}

}
