#include <Tavaro/Studio/Exports/ExportPlace.h>
#include <Tavaro/Studio/Exports/ExportWishes.h>

#include "../../Core/Package/TemporaryFolder.h"

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

using namespace tavaro;

TEST(ExportPlace, everyPresetIsInOnePlaceAndEveryPlaceKnowsItsIcon) {
    for (auto const& preset : ExportPreset::all()) {
        auto const has = [&](auto const& place) { return place.way(preset.id) != nullptr; };
        EXPECT_EQ(std::ranges::count_if(ExportPlace::all(), has), 1) << preset.id;
    }
    std::set<std::string> ids;
    for (auto const& place : ExportPlace::all()) {
        EXPECT_TRUE(ids.insert(place.id).second);
        EXPECT_TRUE(place.id != ExportWishes::custom && place.id != ExportWishes::captions);
        for (auto const& way : place.ways) {
            EXPECT_NE(ExportPreset::withID(way.preset), nullptr) << way.preset;
            EXPECT_EQ(ExportPlace::ofPreset(way.preset), &place);
        }
    }
}

TEST(ExportWishes, makeThePresetsOwnSettingsAndFindThemAgainInTheProjectThatRemembersThem) {
    for (auto const& preset : ExportPreset::all()) {
        for (bool const sound : {true, false}) {
            ExportWishes wishes{.sound = sound};
            wishes.choose(preset.id);
            DemoProject project;
            project.exportSettings = settingsFor(wishes.choices(), project);
            auto expected = preset.settings();
            expected.includesAudio = sound;
            if (!sound) expected.presetID.reset();
            EXPECT_EQ(project.exportSettings, expected) << preset.id;

            auto const again = ExportWishes{}.of(project);
            EXPECT_EQ(settingsFor(again.choices(), project), project.exportSettings) << preset.id;
            EXPECT_NE(again.place, ExportWishes::custom) << preset.id;
            EXPECT_EQ(again.sound, sound);
        }
    }
}

TEST(ExportWishes, ofOwnNumbersCountWhateverTheProjectRemembers) {
    for (std::size_t i = 0; i < namesOf(ExportFormat{}).size(); ++i) {
        ExportWishes const wishes{.place = std::string(ExportWishes::custom),
                                  .size = {1234, 568},
                                  .fps = 25,
                                  .format = static_cast<ExportFormat>(i),
                                  .fit = ContentFit::stretch,
                                  .bitrate = 3'000'000};
        DemoProject project;
        project.exportSettings = ExportPreset::withID("split-vertical")->settings();
        auto const made = settingsFor(wishes.choices(), project);
        EXPECT_EQ(made.size, wishes.size);
        EXPECT_EQ(made.fps, 25);
        EXPECT_EQ(formatOf(made), wishes.format) << displayName(wishes.format);
        EXPECT_EQ(made.fit, ContentFit::stretch);
        EXPECT_EQ(made.bitrateOverride, 3'000'000);
        project.exportSettings = made;
        EXPECT_EQ(ExportWishes{}.of(project).choices(), wishes.choices());
    }
}

TEST(ExportWishes, ofTheLastExportAreWhereAProjectThatWasNeverExportedBegins) {
    TemporaryFolder const folder;
    Preferences preferences(folder / "preferences.json");
    ExportWishes wishes{.captionsBeside = true, .folder = "/films"};
    wishes.choose("gif");
    wishes.remember(preferences);
    DemoProject project;
    project.exportSettings.size = {800, 600}; // as its canvas is
    EXPECT_EQ(ExportWishes::last(preferences).of(project), wishes);
    preferences.set(Preference<std::string>{"com.tavaro.studio.export", ""}, "no record");
    EXPECT_EQ(ExportWishes::last(preferences), ExportWishes{});
}
