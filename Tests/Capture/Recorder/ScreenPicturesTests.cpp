#include <TavaroCapture/Recorder/Private/ScreenPictures.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>

#include <cstring>
#include <deque>
#include <gtest/gtest.h>
#include <random>

namespace tavaro {

namespace {

constexpr int width = 150;
constexpr int height = 64;

/// Areas of it turn into noise.
class NoisyScreen final : public ScreenSource {
public:
    Size2 size() const override { return {width, height}; }
    PixelRect frame() const override { return {0, 0, width, height}; }
    double scaleFactor() const override { return 1; }
    ImageView picture() const override { return image_.view(); }
    PictureChanges const* changes() const override { return tellsChanges ? &changes_ : nullptr; }

    Outcome grab(double) override {
        changes_.clear();
        auto const within = [this](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
        int const areas = within(3);
        for (int i = 0; i < areas; ++i)
            scribble({within(width + 20) - 20, within(height + 20) - 20, 1 + within(60), 1 + within(30)});
        return areas > 0 ? Outcome::changed : Outcome::unchanged;
    }

    bool tellsChanges = true;
    std::mt19937 random{7};

private:
    void scribble(PictureChanges::Area const& area) {
        for (int y = std::max(area.y, 0); y < std::min(area.y + area.height, height); ++y)
            for (int x = std::max(area.x, 0); x < std::min(area.x + area.width, width); ++x)
                for (int c = 0; c < 3; ++c) image_.row(y)[4 * x + c] = static_cast<std::uint8_t>(random());
        changes_.add(area);
    }

    Image image_{width, height};
    PictureChanges changes_{width, height};
};

bool areEqual(EncoderPicture& a, EncoderPicture& b) {
    auto const &p = *a.planes().frame, &q = *b.planes().frame;
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < (plane == 0 ? height : height / 2); ++y)
            if (std::memcmp(p.data[plane] + std::ptrdiff_t{y} * p.linesize[plane],
                            q.data[plane] + std::ptrdiff_t{y} * q.linesize[plane],
                            static_cast<std::size_t>(plane == 0 ? width : width / 2)) != 0)
                return false;
    return true;
}

/// Lends pictures that are whole, and remain what they were for as long as they are held.
void expectWhole(bool tellsChanges, std::size_t held) {
    NoisyScreen screen;
    screen.tellsChanges = tellsChanges;
    ScreenPictures pictures(width, height);
    EncoderPicturePool pool(width, height, AV_PIX_FMT_YUV420P);
    int made = 0;
    struct Pair {
        EncoderPicture lent, whole;
    };
    std::deque<Pair> encoding;
    for (int n = 0; n < 300; ++n) {
        pictures.note(screen, screen.grab(n));
        auto whole = pool.take();
        fillPicture(whole, screen.picture(), PixelOrder::bgra);
        auto lent = pictures.current(screen.picture(), [&] { return ++made, pool.take(); });
        encoding.push_back({std::move(lent), std::move(whole)});
        for (auto& [one, other] : encoding) ASSERT_TRUE(areEqual(one, other)) << n;
        while (encoding.size() > held || (!encoding.empty() && screen.random() % 3 == 0)) encoding.pop_front();
    }
    EXPECT_LE(made, static_cast<int>(held) + 1);
}

}

TEST(ScreenPictures, whatIsConvertedInPartsIsThePictureAndStaysSoWhileItIsEncoded) {
    for (bool const tellsChanges : {true, false})
        for (std::size_t const held : {0, 1, 4}) {
            SCOPED_TRACE(testing::Message() << held << (tellsChanges ? " in parts" : " whole"));
            expectWhole(tellsChanges, held);
        }
}

TEST(ScreenPictures, aScreenOnWhichNothingChangesIsNotConverted) {
    NoisyScreen screen;
    ScreenPictures pictures(width, height);
    EncoderPicturePool pool(width, height, AV_PIX_FMT_YUV420P);
    auto const fresh = [&] { return pool.take(); };
    pictures.note(screen, screen.grab(0));
    auto const first = pictures.current(screen.picture(), fresh);
    Image const other(width, height); // that nobody says is different
    for (int n = 0; n < 3; ++n) {
        auto again = pictures.current(other.view(), fresh);
        EXPECT_EQ(again.planes().frame->data[0], EncoderPicture(first.shared()).planes().frame->data[0]);
    }
}

}
