#include "../Package/TemporaryFolder.h"

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Files/FileError.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

namespace tavaro {

namespace {

TEST(ExportPreset, everyPresetIsFoundByItsOwnIDAndIsWritableAsItStands) {
    std::set<std::string> ids;
    for (auto const& preset : ExportPreset::all()) {
        EXPECT_TRUE(ids.insert(preset.id).second) << preset.id;
        ASSERT_EQ(ExportPreset::withID(preset.id), &preset);
        auto const settings = preset.settings();
        EXPECT_EQ(settings.size, settings.size.evened()) << preset.id << ": 4:2:0 needs even sides";
        EXPECT_EQ(settings.presetID, preset.id);
        // ProRes has no place in MP4.
        EXPECT_TRUE(preset.codec != VideoCodecChoice::proRes422 || preset.container == ExportContainer::mov);
    }
    EXPECT_EQ(ids.size(), 12u);
    EXPECT_EQ(ExportPreset::withID("youtube"), nullptr);
}

TEST(ExportPreset, theWebPresetAlwaysWritesFourMillionBitsASecond) {
    EXPECT_EQ(ExportPreset::withID("web")->settings().bitrate(), 4'000'000);
    EXPECT_EQ((ExportSettings{.size = {640, 360}, .fps = 30}.bitrate()), 2'000'000) << "the floor";
}

TEST(ExportFile, anEstimateCountsPictureSoundAndContainer) {
    ExportSettings movie{.size = {640, 360}, .fps = 30};
    EXPECT_EQ(estimatedFileSize(movie, 10), 2'500'000 + 240'000 + 131'072);
    movie.includesAudio = false;
    EXPECT_EQ(estimatedFileSize(movie, 10), 2'500'000 + 131'072);
    ExportSettings const gif = ExportPreset::withID("gif")->settings();
    EXPECT_EQ(estimatedFileSize(gif, 2), static_cast<std::int64_t>(2 * 960 * 540 * 15 * 0.08));
    for (auto const& settings : {movie, gif}) {
        EXPECT_GT(estimatedFileSize(settings, 1e300), std::int64_t{1} << 50) << "a film without end is very large";
        EXPECT_GE(estimatedFileSize(settings, -1e300), 0);
    }
}

TEST(ExportFile, sizesAreToldInTwoOrThreeFigures) {
    EXPECT_EQ(fileSizeText(999), "999 bytes");
    EXPECT_EQ(fileSizeText(1'000), "1.0 KB");
    EXPECT_EQ(fileSizeText(9'960), "10 KB");
    EXPECT_EQ(fileSizeText(999'600), "1.0 MB") << "never 1000 KB";
    EXPECT_EQ(fileSizeText(123'456'789), "123 MB");
    EXPECT_EQ(fileSizeText(-5), "0 bytes");
}

TEST(ExportFile, aNameTellsProjectSizeClassAndCodec) {
    auto const name = [](std::string_view project, char const* preset) {
        return suggestedFileName(ExportPreset::withID(preset)->settings(), project);
    };
    EXPECT_EQ(name("Onboarding", "youtube-1080"), "Onboarding 1080p");
    EXPECT_EQ(name("Onboarding", "youtube-4k"), "Onboarding 4K HEVC");
    EXPECT_EQ(name("Onboarding", "prores"), "Onboarding 4K ProRes");
    EXPECT_EQ(name("Onboarding", "tiktok"), "Onboarding 1080p");
    EXPECT_EQ(name("Onboarding", "web"), "Onboarding 720p");
    EXPECT_EQ(name("A/B: demo", "web"), "A-B- demo 720p");
    EXPECT_EQ(name(" \u00A0\tTour\n", "web"), "Tour 720p");
    EXPECT_EQ(name("  ", "web"), "Export 720p");
    EXPECT_EQ(suggestedFileName({.size = {2560, 1440}}, "x"), "x 1440p");
    ExportSettings const gif{.size = {960, 540}, .codec = VideoCodecChoice::hevc, .container = ExportContainer::gif};
    EXPECT_EQ(suggestedFileName(gif, "x"), "x 540p");
}

TEST(ExportFile, aLongNameIsCutBetweenCharacters) {
    std::string project;
    for (int i = 0; i < 200; ++i) project += "ü";
    auto const name = suggestedFileName({.size = {1920, 1080}}, project);
    EXPECT_LT(name.size(), 220u);
    EXPECT_EQ(name.substr(name.size() - 8), "ü 1080p");
}

TEST(ExportFile, anExistingFileIsLeftAloneByTakingTheNextNumber) {
    auto const folder = std::filesystem::path(testing::TempDir()) / "tavaro-export-names";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    auto const file = folder / "Tour 1080p.mp4";
    EXPECT_EQ(unusedFile(file), file);
    std::ofstream(file) << "taken";
    std::ofstream(folder / "Tour 1080p 2.mp4") << "taken too";
    EXPECT_EQ(unusedFile(file), folder / "Tour 1080p 3.mp4");
    std::filesystem::create_symlink("nowhere", folder / "Tour 1080p 3.mp4");
    EXPECT_EQ(unusedFile(file), folder / "Tour 1080p 4.mp4") << "writing through a dangling link would make its target";
    std::filesystem::remove_all(folder);
}

TEST(ExportFile, aNameThatIsTakenAndAsLongAsNamesCanBeIsCutForItsNumber) {
    TemporaryFolder const folder;
    std::string stem = "xx";
    while (stem.size() < 251) stem += "€"; // three bytes: the cut would go through one
    auto const file = folder / (stem + ".mp4");
    std::ofstream(file) << "taken";
    auto const second = unusedFile(file);
    EXPECT_EQ(second.filename().string(), stem.substr(0, 248) + " 2.mp4");
    std::ofstream(second) << "taken too";
    EXPECT_EQ(unusedFile(file).filename().string(), stem.substr(0, 248) + " 3.mp4");
    auto const allEnding = folder / ("x." + std::string(253, 'y'));
    std::ofstream(allEnding) << "taken";
    EXPECT_THROW(unusedFile(allEnding), FileError);
}

TEST(ExportFile, aNameThatCannotBeLookedAtIsRefused) {
    TemporaryFolder const folder;
    std::filesystem::create_symlink("loop", folder / "loop");
    for (auto const& file : {folder / (std::string(300, 'x') + ".mp4"), folder / "loop" / "film.mp4"})
        EXPECT_THROW(unusedFile(file), FileError) << file;
    EXPECT_EQ(unusedFile(folder / "loop"), folder / "loop 2");
    EXPECT_EQ(unusedFile(folder / "none" / "film.mp4"), folder / "none" / "film.mp4");
}

TEST(ExportFile, aNamePartIsNeverHiddenAndHoldsNoControlCharacters) {
    EXPECT_EQ(fileNamePart(".hidden"), "-hidden");
    EXPECT_EQ(fileNamePart("one\ntwo\x7F"), "one-two-");
    EXPECT_EQ(fileNamePart("../.."), "-.-..");
}

}

}
