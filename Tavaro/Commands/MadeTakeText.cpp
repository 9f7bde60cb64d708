#include <Tavaro/Commands/MadeTakeText.h>

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace tavaro::commands {

void print(MadeTake const& take, TakeOutput output) {
    auto const& made = take.made;
    if (output == TakeOutput::json) {
        fmt::print("{}\n", encodeJSON(made));
        return;
    }
    fmt::print("{} of {}×{}: {}\n", Timecode::format(made.duration, Timecode::Fraction::hundredths),
               made.sourceSize.width, made.sourceSize.height, take.health);
    if (made.report) fmt::print("{}\n", fmt::join(made.report->summaryLines(), "\n"));
    fmt::print("{}\n", made.path);
}

}
