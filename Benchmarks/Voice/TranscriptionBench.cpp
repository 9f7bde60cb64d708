#include "TranscriptionBench.h"

#include "../../Tests/Voice/Transcription/SpokenTake.h"

#include <TavaroCore/Captions/Transcript.h>
#include <TavaroVoice/Transcription/OnDeviceTranscriber.h>

#include <chrono>
#include <sys/resource.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

constexpr int times = 4; // that the narration is said

double processorSeconds(int who) {
    rusage usage{};
    getrusage(who, &usage);
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double ownMebibytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

}

void benchTranscription() {
    TestFolder const folder;
    auto const engine = transcriptionEngines(EnginePlaces::usual())[1];
    auto const spoken = spokenByFestival(narration, folder);
    if (!engine.isReady || !spoken) return fmt::print(stderr, "bench-voice: no engine or no voice to measure here\n");
    writeWAV(folder / "take.wav", joined(std::vector<MonoSound>(times, *spoken)));
    double const seconds = times * static_cast<double>(spoken->samples.size()) / spoken->rate;
    auto const begun = std::chrono::steady_clock::now();
    double const before = processorSeconds(RUSAGE_SELF) + processorSeconds(RUSAGE_CHILDREN);
    auto const transcript = OnDeviceTranscriber(workOf(engine, "en-US")).transcribe({{folder / "take.wav"}}, "en-US");
    double const wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    double const used = processorSeconds(RUSAGE_SELF) + processorSeconds(RUSAGE_CHILDREN) - before;
    std::string said;
    for (int i = 0; i < times; ++i) said += narration + ' ';
    fmt::print("transcribe.realtime_factor {:.2f} x\n", seconds / used); // of one core
    fmt::print("transcribe.wall_factor {:.2f} x\n", seconds / wall);
    fmt::print("transcribe.word_errors {:.1f} %\n", 100 * wordErrorRate(said, transcript.plainText()));
    fmt::print("transcribe.own_memory {:.0f} MiB\n", ownMebibytes());
}

}
