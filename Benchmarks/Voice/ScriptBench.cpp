#include "ScriptBench.h"

#include "../Core/HourTake.h"

#include <TavaroVoice/Script/AutoDirectorScript.h>
#include <TavaroVoice/Script/ScriptPlan.h>

#include <algorithm>
#include <chrono>
#include <vector>

#include <fmt/format.h>

namespace tavaro {

namespace {

double medianMilliseconds(auto measured) {
    std::vector<double> times;
    for (int i = 0; i < 9; ++i) {
        auto const start = std::chrono::steady_clock::now();
        measured();
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::ranges::nth_element(times, times.begin() + 4);
    return times[4];
}

}

void benchScript() {
    auto project = hourTake();
    // Work in two applications, as an hour has it.
    for (int i = 0; i < 200; ++i)
        project.metadata.edit().appSpans.push_back({i * 18.0, 18, "", i % 2 ? "Files" : "Text Editor"});
    std::vector<AutoDirectorScript::Beat> beats;
    fmt::print("script.hour {:.1f} ms\n", medianMilliseconds([&] { beats = AutoDirectorScript{}.beats(project); }));
    fmt::print("script.hour.events {} events\n", project.metadata->clicks.size() + project.metadata->keystrokes.size());
    fmt::print("script.hour.lines {} lines\n", beats.size());
    std::vector<ScriptLine> lines;
    for (auto const& beat : beats) lines.push_back({beat.time, beat.text});
    auto const text = scriptText(lines);
    VoiceoverPlan plan;
    fmt::print("script.take {:.1f} ms\n", medianMilliseconds([&] { plan = plannedScript(plan, readScript(text)); }));
}

}
