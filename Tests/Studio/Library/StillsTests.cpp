#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Studio/Library/Stills.h>

#include <gtest/gtest.h>

#include <QColor>

using namespace tavaro;

namespace {

constexpr QSize size{160, 90};

/// As QML asks for what has that source.
QImage shown(QString const& source) {
    return Stills::still(source.mid(static_cast<int>(qstrlen("image://stills/"))), size);
}

}

TEST(Stills, fillTheSizeWithTheMiddleOfThePictureAndRoundCorners) {
    TemporaryFolder const folder;
    auto const file = folder / "50% größer? #1/thumb.png";
    std::filesystem::create_directories(file.parent_path());
    QImage picture(300, 300, QImage::Format_RGB32);
    picture.fill(Qt::red);
    for (int y = 100; y < 200; ++y)
        for (int x = 0; x < 300; ++x) picture.setPixelColor(x, y, Qt::green);
    ASSERT_TRUE(picture.save(QString::fromStdString(file.string())));
    auto const still = shown(Stills::ofPicture(file));
    ASSERT_EQ(still.size(), size);
    EXPECT_EQ(still.pixelColor(80, 45), QColor(Qt::green));
    EXPECT_EQ(still.pixelColor(80, 2), QColor(Qt::red));
    for (auto const corner : {QPoint(0, 0), QPoint(159, 0), QPoint(0, 89), QPoint(159, 89)})
        EXPECT_EQ(still.pixelColor(corner).alpha(), 0);
}

TEST(Stills, areNothingWhereThereIsNoPicture) {
    TemporaryFolder const folder;
    EXPECT_TRUE(shown(Stills::ofPicture(folder / "none.png")).isNull());
    EXPECT_TRUE(shown(Stills::ofMovie(folder / "none.mov")).isNull());
    for (auto const* const id : {"", "picture", "movie/1/2/3", "picture/0/!!!", "else/0/YQ"})
        EXPECT_TRUE(Stills::still(QLatin1String(id), size).isNull()) << id;
}
