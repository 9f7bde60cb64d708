#include "TestTake.h"

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>
#include <TavaroRender/Export/FilmPainter.h>

#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <memory>

namespace tavaro {

namespace {

using testing::HasSubstr;

/// What the `ffprobe` program says about the pictures, `key=value` lines; empty where there is no such program.
std::string probed(std::filesystem::path const& file, std::string const& entries) {
    auto const command = "ffprobe -v error -select_streams v -show_entries " + entries + " -of default=nw=1 '" +
                         file.string() + "' 2>/dev/null";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> buffer{};
    while (auto const count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        text.append(buffer.data(), count);
    return text;
}

/// Names of the outermost boxes of an MP4 or MOV, in the order of the file.
std::vector<std::string> boxes(std::filesystem::path const& file) {
    std::vector<std::string> names;
    std::ifstream stream(file, std::ios::binary);
    std::array<unsigned char, 16> head{};
    while (stream.read(reinterpret_cast<char*>(head.data()), 8)) {
        std::uint64_t size = std::uint64_t{head[0]} << 24 | head[1] << 16 | head[2] << 8 | head[3];
        names.emplace_back(reinterpret_cast<char*>(head.data()) + 4, 4);
        std::uint64_t read = 8;
        if (size == 1 && stream.read(reinterpret_cast<char*>(head.data()) + 8, 8)) {
            size = 0;
            for (int i = 8; i < 16; ++i) size = size << 8 | head[static_cast<std::size_t>(i)];
            read = 16;
        }
        stream.seekg(static_cast<std::streamoff>(size - read), std::ios::cur);
    }
    return names;
}

std::vector<std::string> expectedFacts(ExportPreset const& preset) {
    auto const rate = std::to_string(preset.fps) + "/1";
    std::vector<std::string> facts{"width=" + std::to_string(preset.size.width),
                                   "height=" + std::to_string(preset.size.height)};
    auto const add = [&](std::initializer_list<std::string> more) { facts.insert(facts.end(), more); };
    if (preset.container == ExportContainer::gif) {
        add({"codec_name=gif"});
        return facts;
    }
    add({"r_frame_rate=" + rate, "avg_frame_rate=" + rate, "color_range=tv", "color_space=bt709",
         "color_transfer=bt709", "color_primaries=bt709", "sample_aspect_ratio=1:1"});
    switch (preset.codec) {
    case VideoCodecChoice::h264:
        add({"codec_name=h264", "profile=High", "pix_fmt=yuv420p", "codec_tag_string=avc1", "has_b_frames=0"});
        break;
    case VideoCodecChoice::hevc:
        add({"codec_name=hevc", "profile=Main", "pix_fmt=yuv420p", "codec_tag_string=hvc1"});
        break;
    case VideoCodecChoice::proRes422:
        add({"codec_name=prores", "profile=Standard", "pix_fmt=yuv422p10le", "codec_tag_string=apcn"});
        break;
    }
    return facts;
}

TEST(ExportPreset, everyPresetWritesWhatItsTableSays) {
    TestTake take("presets", 2); // a fifteenth of a second
    for (auto const& preset : ExportPreset::all()) {
        SCOPED_TRACE(preset.id);
        auto settings = preset.settings();
        settings.includesAudio = false;
        Exporter exporter(take.project, take.package, settings, {.encoder = EncoderChoice::software});
        auto const file =
            exporter.exportFile(take.output(preset.id + "." + std::string(fileExtension(preset.container))));
        auto const info = MovieReader(file).info();
        EXPECT_EQ(info.width, preset.size.width);
        EXPECT_EQ(info.height, preset.size.height);
        EXPECT_NEAR(info.duration, static_cast<double>(exporter.totalFrames()) / static_cast<double>(preset.fps),
                    0.011);
        auto const facts = probed(file, "stream");
        if (facts.empty()) continue; // no such program
        for (auto const& fact : expectedFacts(preset)) EXPECT_THAT("\n" + facts, HasSubstr("\n" + fact + "\n"));
        if (preset.container == ExportContainer::gif) continue;
        auto const order = boxes(file);
        auto const place = [&](char const* name) { return std::ranges::find(order, name) - order.begin(); };
        EXPECT_LT(place("moov"), place("mdat")) << "a browser plays it before it has all";
        EXPECT_LT(place("mdat"), static_cast<long>(order.size()));
    }
}

TEST(ExportPreset, keyFramesAreNoMoreThanTwoSecondsApart) {
    TestTake take("keys", 150);
    take.settings.size = {64, 36};
    take.settings.fps = 4;
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::hevc}) {
        take.settings.codec = codec;
        Exporter exporter(take.project, take.package, take.settings, {.encoder = EncoderChoice::software});
        auto const flags = probed(exporter.exportMovie(take.output()), "packet=flags");
        if (flags.empty()) GTEST_SKIP() << "no ffprobe program";
        int sinceKey = 0, packets = 0;
        for (auto at = flags.find("flags="); at != std::string::npos; at = flags.find("flags=", at + 6), ++packets) {
            sinceKey = flags[at + 6] == 'K' ? 0 : sinceKey + 1;
            EXPECT_LT(sinceKey, 8);
        }
        EXPECT_EQ(packets, 20);
    }
}

TEST(ExportFormat, sizesAndRatesAtTheEdgesAreWritten) {
    TestTake take("edges", 6);
    struct Case {
        Size2 size;
        std::int64_t fps;
        Size2 written;
    };
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::hevc, VideoCodecChoice::proRes422}) {
        for (auto const& [size, fps, written] : {Case{{16, 16}, 30, {16, 16}}, Case{{65, 65}, 30, {64, 64}},
                                                 Case{{1921, 17}, 1, {1920, 16}}, Case{{34, 900}, 240, {34, 900}}}) {
            take.settings.size = size;
            take.settings.fps = fps;
            take.settings.codec = codec;
            take.settings.container =
                codec == VideoCodecChoice::proRes422 ? ExportContainer::mov : ExportContainer::mp4;
            Exporter exporter(take.project, take.package, take.settings);
            auto const info = MovieReader(exporter.exportMovie(take.output("edge.mov"))).info();
            EXPECT_EQ((Size2{info.width, info.height}), written);
            EXPECT_EQ(info.frameCount, exporter.totalFrames());
            EXPECT_NEAR(info.duration, static_cast<double>(exporter.totalFrames()) / static_cast<double>(fps), 1e-3);
        }
    }
}

TEST(ExportFormat, bitRatesAtTheEdgesAreWrittenAndFewBitsMakeAWorsePicture) {
    TestTake take("bits", 15);
    auto const still = filmPainter(take.project, take.package, take.settings).still(10 / 30.0);
    for (auto const codec : {VideoCodecChoice::h264, VideoCodecChoice::hevc}) {
        auto const quality = [&](std::int64_t bitrate) {
            take.settings.codec = codec;
            take.settings.bitrateOverride = bitrate;
            auto const file = Exporter(take.project, take.package, take.settings).exportMovie(take.output());
            EXPECT_EQ(MovieReader(file).info().frameCount, 15);
            return psnr(movieFrame(file, 10, 30).view(), still.view());
        };
        EXPECT_LT(quality(50'000) + 3, quality(1'000'000));
        EXPECT_GT(quality(2'000'000'000), 40) << "half the chroma is all that is lost";
    }
}

TEST(ExportFormat, aProjectOfACardAloneIsAMovieAndOneOfNothingIsNot) {
    TestTake take("card", 1);
    take.project.timeline.clips.clear();
    EXPECT_THROW(Exporter(take.project, take.package, take.settings).exportMovie(take.output()), ExportError);
    EXPECT_EQ(take.filesLeft(), 0);
    take.project.intro = TitleCard{.text = "Hello", .duration = 0.5};
    take.project.sourceSize = {};
    Exporter exporter(take.project, take.package, take.settings);
    EXPECT_EQ(MovieReader(exporter.exportMovie(take.output())).info().frameCount, 15);
}

}

}
