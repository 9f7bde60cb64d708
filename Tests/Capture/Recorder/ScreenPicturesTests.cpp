#include "../TemporaryFolder.h"

#include <TavaroCapture/Recorder/Private/ScreenPictures.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include <algorithm>
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

/// Pictures as an encoder takes them, each some time after it was lent.
class Movie {
public:
    explicit Movie(std::filesystem::path file)
        : file_(std::move(file))
        , writer_(file_, {.container = MovieContainer::mov,
                          .intent = MovieIntent::live,
                          .width = width,
                          .height = height,
                          .fps = 60}) {}

    EncoderPicture picture() { return writer_.picture(); }
    void append(EncoderPicture picture) {
        writer_.append(std::move(picture), static_cast<double>(writer_.framesAppended()) / 60);
    }
    MovieReader read() {
        writer_.finish();
        return MovieReader(file_);
    }

private:
    std::filesystem::path const file_;
    MovieWriter writer_;
};

void expectSame(Movie& a, Movie& b, int frames) {
    auto one = a.read(), other = b.read();
    for (int n = 0; n < frames; ++n) ASSERT_TRUE(one.frame(n / 60.0).showsSamePixels(other.frame(n / 60.0))) << n;
}

/// Lends pictures that are whole, and remain what they were for as long as they are held.
void expectWhole(bool tellsChanges, std::size_t held) {
    constexpr int frames = 150;
    TemporaryFolder folder;
    Movie lent(folder.path() / "lent.mov"), whole(folder.path() / "whole.mov");
    NoisyScreen screen;
    screen.tellsChanges = tellsChanges;
    ScreenPictures pictures(width, height);
    int made = 0;
    std::deque<EncoderPicture> encoding;
    auto const encodeTo = [&](std::size_t left) {
        for (; encoding.size() > left; encoding.pop_front()) lent.append(std::move(encoding.front()));
    };
    for (int n = 0; n < frames; ++n) {
        pictures.note(screen, screen.grab(n));
        auto picture = whole.picture();
        fillPicture(picture, screen.picture(), PixelOrder::bgra);
        whole.append(std::move(picture));
        encoding.push_back(pictures.current(screen.picture(), [&] { return ++made, lent.picture(); }));
        encodeTo(screen.random() % (held + 1));
    }
    encodeTo(0);
    EXPECT_LE(made, static_cast<int>(held) + 2) << "and one that the encoder may keep";
    expectSame(lent, whole, frames);
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
    TemporaryFolder folder;
    Movie still(folder.path() / "still.mov");
    NoisyScreen screen;
    ScreenPictures pictures(width, height);
    while (screen.grab(0) != ScreenSource::Outcome::changed) continue;
    Image const other(width, height); // of which nobody says that it is different
    int made = 0;
    auto const fresh = [&] { return ++made, still.picture(); };
    still.append(pictures.current(screen.picture(), fresh));
    for (int n = 0; n < 3; ++n) still.append(pictures.current(other.view(), fresh));
    EXPECT_EQ(made, 1);
    auto reader = still.read();
    EXPECT_TRUE(reader.frame(0).showsSamePixels(reader.frame(3 / 60.0)));
}

}
