#include <TavaroRender/Renderer/Private/CanvasHistory.h>

#include <algorithm>
#include <gtest/gtest.h>

namespace tavaro {

namespace {

std::vector<std::uint8_t> pixelsOf(Image const& image) {
    return {image.view().row(0), image.view().row(0) + image.view().stride * image.height()};
}

Image checkered() {
    Image canvas(8, 6);
    for (int y = 0; y < canvas.height(); ++y)
        for (int x = 0; x < 4 * canvas.width(); ++x)
            canvas.view().row(y)[x] = static_cast<std::uint8_t>(7 * x + 31 * y);
    return canvas;
}

}

TEST(CanvasHistory, bringsBackWhatWasBeneathWhereverThatIs) {
    CanvasBounds const bounds[] = {{1, 1, 3, 3},  {-5, 2, 2, 9},  {-5, 1, -2, 4},
                                   {9, 1, 12, 4}, {1, -5, 4, -2}, {3, 3, 3, 5}};
    for (auto const& rect : bounds) {
        auto canvas = checkered();
        CanvasHistory history;
        history.keep(CanvasStage::pointer, rect, canvas.view());
        for (int y = std::max(0, static_cast<int>(rect.top)); y < std::min(6.0, rect.bottom); ++y)
            for (int x = std::max(0, static_cast<int>(rect.left)); x < std::min(8.0, rect.right); ++x)
                std::fill_n(canvas.view().row(y) + 4 * x, 4, std::uint8_t{0});
        ASSERT_TRUE(history.returnTo(CanvasStage::pointer, canvas.view()));
        EXPECT_EQ(pixelsOf(canvas), pixelsOf(checkered())) << rect.left << ", " << rect.top;
    }
}

}
