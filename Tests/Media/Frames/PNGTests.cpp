#include <cstring>
#include <random>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/PNG.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Files/FullDisk.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using Kind = MediaError::Kind;

Image noise(int width, int height, bool isOpaque) {
    Image image(width, height);
    std::mt19937 random(3);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < 4 * width; ++x)
            image.row(y)[x] = isOpaque && x % 4 == 3 ? 255 : static_cast<std::uint8_t>(random());
    return image;
}

TEST(PNG, everyPixelComesBackWithAndWithoutTransparency) {
    TemporaryFolder folder;
    auto const file = folder.path() / "noise.png";
    for (int i = 0; i < 4; ++i) {
        auto const packing = i / 2 ? PNGPacking::quick : PNGPacking::small;
        for (auto const& [width, height] : {std::pair{1, 1}, {37, 5}, {640, 3}}) {
            auto const image = noise(width, height, i % 2 == 0);
            writePNG(file, image.view(), packing);
            auto const read = readPNG(file);
            EXPECT_EQ(encodePNG(image.view(), packing), bytesOf(file));
            ASSERT_EQ(read.width(), width);
            ASSERT_EQ(read.height(), height);
            for (int y = 0; y < height; ++y)
                ASSERT_EQ(std::memcmp(read.row(y), image.row(y), static_cast<std::size_t>(4 * width)), 0);
        }
    }
}

TEST(PNG, aFailedWriteLeavesWhatWasThere) {
    TemporaryFolder folder;
    auto const file = folder.path() / "picture.png";
    writePNG(file, noise(8, 8, true).view());
    auto const before = bytesOf(file);
    try {
        FullDisk const full(20'000);
        writePNG(file, noise(200, 200, true).view());
        ADD_FAILURE() << "the picture was written";
    } catch (MediaError const& error) {
        EXPECT_EQ(error.kind(), Kind::diskFull);
    }
    EXPECT_EQ(bytesOf(file), before);
    EXPECT_EQ(filesIn(folder.path()), 1);
    try {
        writePNG(folder.path() / "none" / "picture.png", noise(8, 8, true).view());
        ADD_FAILURE() << "a folder that is not there was written to";
    } catch (MediaError const& error) {
        EXPECT_EQ(error.kind(), Kind::notWritable);
        EXPECT_EQ(error.what(),
                  "Could not write 'picture.png': there is no folder '" + (folder.path() / "none").string() + "'.");
    }
}

TEST(PNG, damagedPicturesAreRefusedWithASentence) {
    TemporaryFolder folder;
    auto const file = folder.path() / "picture.png";
    EXPECT_THROW(readPNG(folder.path() / "none.png"), MediaError);
    EXPECT_THROW(readPNG(folder.path()), MediaError);
    ASSERT_EQ(mkfifo((folder.path() / "pipe.png").c_str(), 0600), 0);
    EXPECT_THROW(readPNG(folder.path() / "pipe.png"), MediaError);
    writePNG(file, noise(40, 30, false).view());
    auto const whole = bytesOf(file);
    for (std::size_t length = 0; length < whole.size(); length += 97) {
        writeBytes(file, std::string_view(whole).substr(0, length));
        try {
            readPNG(file);
            ADD_FAILURE() << length << " bytes were read as a picture";
        } catch (MediaError const& error) {
            EXPECT_STREQ(error.what(), "Could not read 'picture.png': it is damaged, or not a PNG picture.");
        }
    }
    for (unsigned seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        auto bytes = whole;
        bytes[random() % (seed % 2 ? 60 : bytes.size())] = static_cast<char>(random());
        writeBytes(file, bytes);
        try {
            readPNG(file);
        } catch (MediaError const&) {
        }
    }
}

}
}
