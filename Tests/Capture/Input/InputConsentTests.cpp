#include <TavaroCapture/Input/InputConsent.h>

#include "../TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>

namespace tavaro {

namespace fs = std::filesystem;

TEST(InputConsent, isKeptForItsOwnerAloneUntilItIsRevoked) {
    TemporaryFolder const folder;
    auto const file = folder.path() / "state" / "input.json";
    EXPECT_EQ(inputConsent(file), std::nullopt);
    EXPECT_FALSE(revokeInput(file));
    InputConsent const consent{.allowedAt = Date::now(), .countsTaps = true};
    allowInput(consent, file);
    EXPECT_EQ(inputConsent(file), consent);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    allowInput({.allowedAt = Date::now(), .isLeftHanded = true}, file);
    EXPECT_TRUE(inputConsent(file)->isLeftHanded);
    EXPECT_TRUE(revokeInput(file));
    EXPECT_EQ(inputConsent(file), std::nullopt);
}

TEST(InputConsent, whatIsNotOneAllowsNothing) {
    TemporaryFolder const folder;
    auto const file = folder.path() / "input.json";
    for (auto const* const text : {"", "{}", "null", "[1]", R"({"allowedAt": "yes"})", R"({"countsTaps": true})",
                                   R"({"allowedAt": "2026-03-01T09:30:00Z")"}) {
        std::ofstream(file) << text;
        EXPECT_EQ(inputConsent(file), std::nullopt) << text;
    }
    fs::remove(file);
    fs::create_directory(file);
    EXPECT_EQ(inputConsent(file), std::nullopt);
}

}
