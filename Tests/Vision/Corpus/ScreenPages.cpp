#include "ScreenPages.h"

#include <cmath>

namespace tavaro {

namespace {

constexpr std::string_view mono = "JetBrains Mono", proportional = "Inter";

int rowHeight(double textSize) { return static_cast<int>(std::lround(textSize * 1.45)); }

/// All letters of the monospaced face are that wide.
double letterWidth(double textSize) {
    DrawnScreen screen(1, 1);
    return screen.letters("X", {std::string(mono), textSize}).front().box.width;
}

std::shared_ptr<ScreenPage> emptyPage(PageStyle const& style) {
    auto page = std::make_shared<ScreenPage>();
    page->colors = style.colors;
    page->height = static_cast<int>(style.textSize);
    return page;
}

}

std::shared_ptr<ScreenPage> terminalPage(std::vector<std::string> const& block, PageStyle const& style,
                                         SecretPlanting& planting) {
    auto page = emptyPage(style);
    int const margin = static_cast<int>(style.textSize / 2);
    auto const columns = static_cast<std::size_t>((style.width - 2 * margin) / letterWidth(style.textSize));
    for (auto const& text : block) {
        for (auto const& line : planting.planted(text)) {
            auto const ink = text.starts_with("$") ? style.colors.accent : style.colors.text;
            std::size_t start = 0;
            do {
                page->lines.push_back({margin,
                                       page->height,
                                       line.part(start, start + columns),
                                       {std::string(mono), style.textSize},
                                       ink});
                page->height += rowHeight(style.textSize);
                start += columns;
            } while (start < line.text.size());
        }
    }
    return page;
}

std::shared_ptr<ScreenPage> editorPage(std::vector<std::string> const& block, PageStyle const& style,
                                       SecretPlanting& planting) {
    auto page = emptyPage(style);
    page->isCode = true;
    int const gutter = static_cast<int>(style.textSize * 4), step = rowHeight(style.textSize);
    TextFace const face{std::string(mono), style.textSize};
    for (auto const& text : block) {
        for (auto const& line : planting.planted(text)) {
            auto const number = std::to_string(1 + page->height / step);
            page->lines.push_back({gutter / 4, page->height, {number, {}}, face, style.colors.dim});
            page->lines.push_back({gutter, page->height, line, face, style.colors.text});
            page->height += step;
        }
    }
    return page;
}

std::shared_ptr<ScreenPage> browserPage(std::vector<std::string> const& block, PageStyle const& style,
                                        SecretPlanting& planting) {
    auto page = emptyPage(style);
    int const margin = style.width / 12;
    bool isHeading = true;
    for (auto const& text : block) {
        auto const size = isHeading ? std::round(style.textSize * 1.6) : style.textSize;
        for (auto const& line : planting.planted(text)) {
            page->lines.push_back(
                {margin, page->height, line, {std::string(proportional), size, isHeading}, style.colors.text});
            page->height += static_cast<int>(size * 2);
        }
        isHeading = false;
    }
    return page;
}

std::shared_ptr<ScreenPage> formPage(std::vector<std::string> const& block, PageStyle const& style,
                                     SecretPlanting& planting) {
    auto page = emptyPage(style);
    auto const unit = static_cast<int>(style.textSize);
    TextFace const face{std::string(proportional), style.textSize};
    for (auto const& text : block) {
        auto const bar = text.find('|');
        page->lines.push_back({2 * unit, page->height, {text.substr(0, bar), {}}, face, style.colors.dim});
        PixelBox const field{12 * unit, page->height - unit / 2, std::min(30 * unit, style.width - 14 * unit),
                             unit * 9 / 4};
        for (auto const& value : planting.planted(text.substr(bar + 1)))
            page->lines.push_back({12 * unit + unit / 2, page->height, value, face, style.colors.text, field});
        page->height += 3 * unit;
    }
    return page;
}

void append(ScreenPage& page, ScreenPage const& more) {
    for (auto line : more.lines) {
        line.y += page.height;
        if (line.field) line.field->y += page.height;
        page.lines.push_back(std::move(line));
    }
    page.height += more.height;
}

}
