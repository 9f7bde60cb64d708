#include "../TemporaryFolder.h"

#include <TavaroCapture/Recorder/Private/MemoryPressure.h>
#include <TavaroCore/Files/AtomicFile.h>

#include <gtest/gtest.h>

namespace tavaro {

TEST(MemoryPressure, countsEachTimeThatMemoryGetsShort) {
    TemporaryFolder folder;
    auto const file = folder.path() / "memory";
    MemoryPressure pressure(file);
    auto const after = [&](std::string const& text) {
        writeFileAtomically(file, text);
        pressure.look();
        return pressure.events();
    };
    pressure.look();
    EXPECT_EQ(pressure.events(), 0) << "a system that does not tell";
    EXPECT_EQ(after("some avg10=9.99 avg60=0.00 avg300=0.00 total=0\nfull avg10=90.00"), 0);
    EXPECT_EQ(after("some avg10=12.50 avg60=0.00"), 1);
    EXPECT_EQ(after("some avg10=7.00 avg60=0.00"), 1) << "it is still so";
    EXPECT_EQ(after("some avg10=12.50 avg60=0.00"), 1);
    EXPECT_EQ(after("some avg10=1.00 avg60=0.00"), 1);
    EXPECT_EQ(after("some avg10=40.00 avg60=0.00"), 2);
    EXPECT_EQ(after("nonsense"), 2);
}

}
