#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::Pair;

TEST(CameraPreferences, aLagIsKeptForEachCameraAndNonsenseIsNoLag) {
    TemporaryFolder folder;
    Preferences preferences(folder.path() / "preferences.json");
    preferences.set(cameraLags, {"=0.1", "desk", "desk=", "desk=0.1s", "desk=nan", "desk=1e9", "a=b=-0.05"});
    EXPECT_THAT(cameraSource("", preferences).lags, ElementsAre(Pair("a=b", -0.05)));
    keepCameraLag(preferences, "desk", 0.1);
    keepCameraLag(preferences, "door", 0.0333333);
    keepCameraLag(preferences, "desk", 0.2);
    auto const source = cameraSource("door", preferences);
    EXPECT_EQ(source.id, "door");
    EXPECT_THAT(source.lags, ElementsAre(Pair("a=b", -0.05), Pair("desk", 0.2), Pair("door", 0.033)));
    EXPECT_EQ(preferences.get(cameraLags).size(), 5u) << "what is not this camera's stays as it is";
}
