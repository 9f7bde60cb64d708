#include <TavaroPlatform/Folders/Folders.h>

#include <cstdlib>
#include <gtest/gtest.h>

namespace tavaro {

TEST(Folders, aRelativeDataHomeDoesNotCount) {
    setenv("HOME", "/home/someone", 1);
    setenv("XDG_DATA_HOME", "elsewhere", 1);
    EXPECT_EQ(folders::recordings(), "/home/someone/.local/share/Tavaro/Recordings");
    setenv("XDG_DATA_HOME", "/data", 1);
    EXPECT_EQ(folders::applicationSupport(), "/data");
    unsetenv("XDG_DATA_HOME");
}

}
