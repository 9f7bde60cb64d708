#include <Tavaro/Commands/MadeTakeText.h>

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tavaro::commands {

void print(MadeTake const& take, TakeOutput output) {
    auto const& made = take.made;
    if (output == TakeOutput::json) {
        terminal::sayJSON(encodeJSON(made));
        return;
    }
    terminal::say("{} of {}×{}: {}\n", Timecode::format(made.duration, Timecode::Fraction::hundredths),
                  made.sourceSize.width, made.sourceSize.height, take.health);
    if (made.report)
        for (auto const& line : made.report->summaryLines()) terminal::say("{}\n", line);
    terminal::sayPath(made.path);
}

}
