#include <Tavaro/Studio/Exports/ExportMeasure.h>
#include <Tavaro/Studio/Exports/ExportPace.h>
#include <Tavaro/Studio/Exports/ExportText.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>

#include <gtest/gtest.h>

#include <random>

using namespace tavaro;

namespace {

/// What an export with those settings took on a made-up machine.
ExportMeasure measured(ExportSettings const& settings, double duration, double pixelsASecond, double shareOfBytes) {
    auto const frames = static_cast<std::int64_t>(duration * static_cast<double>(settings.fps));
    auto const pixels = static_cast<double>(settings.size.width * settings.size.height * frames);
    auto const estimated = estimatedFileSize(settings, duration);
    return {.kind = ExportMeasure::kindOf(settings),
            .width = settings.size.width,
            .height = settings.size.height,
            .frames = frames,
            .seconds = pixels / pixelsASecond,
            .estimatedBytes = estimated,
            .bytes = static_cast<std::int64_t>(static_cast<double>(estimated) * shareOfBytes)};
}

bool contains(ExportEstimate::Span const& span, double value) { return span.least <= value && value <= span.most; }

}

TEST(ExportEstimate, ofAnyFilmHasWhatTheSameMachineTakesForItAndGrowsWithItsLength) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> speeds(1e7, 1e9), shares(0.1, 1), lengths(5, 600);
    for (auto const& known : ExportPreset::all()) {
        for (auto const& asked : ExportPreset::all()) {
            auto const speed = speeds(random), share = shares(random), length = lengths(random);
            std::vector const measures{measured(known.settings(), 60, speed, share)};
            auto const estimate = ExportEstimate::of(asked.settings(), length, measures);
            auto const truth = measured(asked.settings(), length, speed, share);
            ASSERT_TRUE(estimate.seconds.has_value());
            EXPECT_TRUE(contains(*estimate.seconds, truth.seconds)) << known.id << " → " << asked.id;
            EXPECT_TRUE(contains(estimate.bytes, static_cast<double>(truth.bytes)) ||
                        truth.kind != measures.front().kind)
                << known.id << " → " << asked.id;
            auto const longer = ExportEstimate::of(asked.settings(), 2 * length, measures);
            EXPECT_GT(longer.seconds->most, estimate.seconds->most);
            EXPECT_GT(longer.bytes.most, estimate.bytes.most);
        }
    }
}

TEST(ExportEstimate, isNarrowForAFilmLikeOneBeforeAndTellsNoTimeBeforeTheFirst) {
    auto const web = ExportPreset::withID("web")->settings();
    EXPECT_FALSE(ExportEstimate::of(web, 60, {}).seconds);
    auto const usual = static_cast<double>(estimatedFileSize(web, 60));
    EXPECT_TRUE(contains(ExportEstimate::of(web, 60, {}).bytes, usual));

    std::vector const same{measured(web, 30, 1e8, 0.4)};
    auto const estimate = ExportEstimate::of(web, 60, same);
    EXPECT_LT(estimate.seconds->most / estimate.seconds->least, 1.5);
    EXPECT_LT(estimate.bytes.most / estimate.bytes.least, 1.5);
    std::vector const broken{ExportMeasure{.kind = "h264"}};
    EXPECT_FALSE(ExportEstimate::of(web, 60, broken).seconds);
}

TEST(ExportPace, tellsSpeedAndWhatIsLeftAndHowLongNothingCame) {
    ExportPace pace(100);
    EXPECT_DOUBLE_EQ(pace.still(112), 12);
    pace.note({.totalFrames = 1000, .stage = ExportStage::enhancing, .enhanced = 0.5}, 113);
    EXPECT_DOUBLE_EQ(pace.still(114), 1);
    EXPECT_FALSE(pace.framesASecond(114) || pace.secondsLeft(114));
    for (int i = 0; i <= 400; ++i)
        pace.note({.framesWritten = i, .totalFrames = 1000, .stage = ExportStage::rendering}, 114 + i * 0.05);
    EXPECT_NEAR(*pace.framesASecond(134), 20, 0.5);
    EXPECT_NEAR(*pace.secondsLeft(134), 30, 1);
    EXPECT_DOUBLE_EQ(pace.elapsed(134), 34);
    EXPECT_LT(*pace.framesASecond(154), 10) << "it sinks while nothing comes";
    EXPECT_DOUBLE_EQ(pace.still(154), 20);
}

TEST(ExportText, saysSizesAndTimesAsPeopleGuessThem) {
    using namespace exportText;
    auto const said = [](QString const& text) { return text.toStdString(); };
    EXPECT_EQ(said(size({12e6, 20e6})), "12–20 MB");
    EXPECT_EQ(said(size({640e3, 1.2e6})), "640 KB–1.2 MB");
    EXPECT_EQ(said(size({12e6, 12.1e6})), "12 MB");
    EXPECT_EQ(said(about(0.2)), "1 s");
    EXPECT_EQ(said(about(43)), "45 s");
    EXPECT_EQ(said(about(59)), "1 min");
    EXPECT_EQ(said(about(3600 + 1200)), "1 h 20 min");
    EXPECT_EQ(said(time(ExportEstimate::Span{62, 140})), "1–2 min");
    EXPECT_EQ(said(time(ExportEstimate::Span{40, 70})), "40 s–1 min");
    EXPECT_EQ(said(time(std::nullopt)), "");
    EXPECT_EQ(said(size({1e300, 1e300})), "1000000 TB");
    EXPECT_TRUE(about(1e300).endsWith(u" min"));
}
