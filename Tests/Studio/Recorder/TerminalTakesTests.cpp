#include "RecorderTest.h"

#include <Tavaro/Control/TakeServer.h>
#include <Tavaro/Studio/Recorder/TerminalTakes.h>

#include <QAbstractItemModelTester>

#include <optional>

using namespace tavaro;

namespace {

class TerminalTakesTest : public RecorderTest {
protected:
    bool shows(TerminalTakes const& takes, QString const& begun) const {
        return becomes([&] {
            return takes.count() == 1 &&
                   takes.data(takes.index(0), TerminalTakes::textRole).toString().startsWith(begun);
        });
    }

    RecordingController recorder{queue}; // the terminal's
};

}

TEST_F(TerminalTakesTest, aTerminalsTakeIsShownAndOrderedAboutUntilItIsOver) {
    TerminalTakes takes(queue, folder / "takes");
    QAbstractItemModelTester const tester(&takes, QAbstractItemModelTester::FailureReportingMode::Fatal);
    bool hasEnded = false;
    QObject::connect(&takes, &TerminalTakes::ended, [&] { hasEnded = true; });
    std::optional<TakeServer> server(std::in_place, queue, recorder, folder / "takes");
    recorder.start({.recorder = {.source = DisplaySource{"display-1"}},
                    .project = {.package = (folder / "take.recproj").string(), .firstEdit = FirstEdit::raw}});
    ASSERT_TRUE(shows(takes, "A terminal records: 0:0"));
    takes.togglePause(0);
    EXPECT_TRUE(shows(takes, "A terminal’s take is paused at 0:0"));
    EXPECT_EQ(recorder.state().phase, RecorderPhase::paused);
    takes.stop(1); // there is none
    takes.stop(0);
    EXPECT_TRUE(becomes([&] { return recorder.isIdle(); }));
    server.reset();
    EXPECT_TRUE(becomes([&] { return hasEnded; }));
    EXPECT_EQ(takes.count(), 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "take.recproj/project.json"));
}
