// What encoding costs pictures: how close films come to what was drawn, and how large they are, beside FFmpeg's GIFs
// and beside H.264 at the same rate.

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroMedia/Frames/EncoderPicture.h>
#include <TavaroMedia/GIF/GIFWriter.h>
#include <TavaroMedia/Movie/MovieWriter.h>

#include "FilmScenes.h"

namespace tavaro {

namespace {

namespace fs = std::filesystem;

struct Format {
    int width, height, fps, frames;
    double seconds() const { return static_cast<double>(frames) / fps; }
};

void print(std::string const& name, double value, char const* unit) {
    std::printf("%s %.3f %s\n", name.c_str(), value, unit);
    std::fflush(stdout);
}

/// A film as it was drawn, frame after frame, as RGB bytes that FFmpeg reads.
class DrawnFilm {
public:
    DrawnFilm(fs::path file, FilmScene scene, Format const& format)
        : file_(std::move(file))
        , scene_(scene)
        , format_(format)
        , drawing_(scene, format.width, format.height)
        , image_(format.width, format.height) {
        std::ofstream bytes(file_, std::ios::binary);
        for (int n = 0; n < format.frames; ++n) {
            draw(n);
            for (int y = 0; y < format.height; ++y)
                bytes.write(reinterpret_cast<char const*>(image_.row(y)), 4L * format.width);
        }
    }
    ~DrawnFilm() {
        std::error_code ignored;
        fs::remove(file_, ignored);
    }
    DrawnFilm(DrawnFilm const&) = delete;

    Format const& format() const { return format_; }
    std::string_view name() const { return nameOf(scene_); }

    /// FFmpeg's arguments for it.
    std::string input() const {
        return fmt::format("-f rawvideo -pix_fmt rgb0 -s {}x{} -r {} -i '{}' ", format_.width, format_.height,
                           format_.fps, file_.string());
    }

    void appendTo(PictureSink& sink) {
        for (int n = 0; n < format_.frames; ++n) {
            draw(n);
            auto picture = sink.picture();
            fillPicture(picture, image_.view());
            sink.append(std::move(picture), static_cast<double>(n) / format_.fps);
        }
    }

private:
    void draw(int n) { drawing_.draw(image_, n * 60 / format_.fps); }

    fs::path file_;
    FilmScene scene_;
    Format format_;
    FilmSceneDrawing drawing_;
    Image image_;
};

struct Quality {
    double psnr = 0; // decibels
    double ssim = 0;
    double bytes = 0;
};

std::string output(std::string const& command) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const pipe(popen((command + " 2>&1").c_str(), "r"), pclose);
    std::string text;
    std::array<char, 4096> buffer{};
    while (auto const count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        text.append(buffer.data(), count);
    return text;
}

double figure(std::string const& text, std::string const& label) {
    auto const at = text.rfind(label);
    if (at == std::string::npos) throw std::runtime_error("FFmpeg did not measure '" + label + "':\n" + text);
    return std::atof(text.c_str() + at + label.size());
}

Quality measured(DrawnFilm const& film, fs::path const& file, char const* pixels) {
    auto const graph = fmt::format("[0]fps={0},scale=out_color_matrix=bt709,format={1},split[a][b];"
                                   "[1]scale=out_color_matrix=bt709,format={1},split[c][d];"
                                   "[a][c]psnr=shortest=1,nullsink;[b][d]ssim=shortest=1",
                                   film.format().fps, pixels);
    auto const text = output("ffmpeg -nostdin -hide_banner -i '" + file.string() + "' " + film.input() + "-lavfi '" +
                             graph + "' -f null -");
    return {figure(text, "average:"), figure(text, "All:"), static_cast<double>(fs::file_size(file))};
}

void printAll(std::string const& name, Quality const& quality, double seconds) {
    print(name + ".psnr", quality.psnr, "dB");
    print(name + ".ssim", quality.ssim, "ratio");
    print(name + ".rate", quality.bytes * 8 / seconds / 1000, "kbit/s");
}

// ---- GIF

void writeGIF(DrawnFilm& film, fs::path const& file) {
    auto const& format = film.format();
    GIFPaletteMaker maker(format.width, format.height);
    film.appendTo(maker);
    GIFWriter writer(file, format.width, format.height, maker.palette());
    film.appendTo(writer);
    writer.finish(format.seconds());
}

void gif(fs::path const& folder, FilmScene scene) {
    DrawnFilm film(folder / "film.rgb", scene, {960, 540, 15, 45});
    auto const file = folder / "film.gif";
    auto const name = fmt::format("quality.gif.{}", film.name());
    writeGIF(film, file);
    printAll(name, measured(film, file, "gbrp"), film.format().seconds());
    for (std::string const dither : {"sierra2_4a", "bayer:bayer_scale=5"}) {
        for (std::string const statistics : {"full", "diff"}) {
            output("ffmpeg -nostdin -y " + film.input() + "-lavfi 'split[a][b];[a]palettegen=stats_mode=" + statistics +
                   "[p];[b][p]paletteuse=diff_mode=rectangle:dither=" + dither + "' '" + file.string() + "'");
            printAll(fmt::format("{}.ffmpeg_{}_{}", name, dither.substr(0, dither.find(':')), statistics),
                     measured(film, file, "gbrp"), film.format().seconds());
        }
    }
}

// ---- movies

void movie(fs::path const& folder, FilmScene scene, Format const& format, std::int64_t rate) {
    DrawnFilm film(folder / "film.rgb", scene, format);
    auto const file = folder / "film.mp4";
    for (auto const codec : {MovieCodec::h264, MovieCodec::hevc}) {
        MovieWriter writer(
            file, {.codec = codec, .width = format.width, .height = format.height, .fps = format.fps, .bitrate = rate});
        film.appendTo(writer);
        writer.finish();
        printAll(fmt::format("quality.{}.{}p{}.{}", codec == MovieCodec::h264 ? "h264" : "hevc", format.height,
                             format.fps, film.name()),
                 measured(film, file, "yuv420p"), format.seconds());
    }
}

void measure(fs::path const& folder, std::string const& only) {
    auto const isWanted = [&](char const* part) { return only.empty() || only == part; };
    auto const rateOf = [](Format const& format) {
        return ExportSettings{.size = {format.width, format.height}, .fps = format.fps, .codec = VideoCodecChoice::hevc}
            .bitrate();
    };
    for (auto const scene : filmScenes) {
        if (isWanted("gif")) gif(folder, scene);
        for (auto const& [part, format] :
             {std::pair{"1080", Format{1920, 1080, 60, 150}}, {"2160", Format{3840, 2160, 30, 60}}})
            if (isWanted(part)) movie(folder, scene, format, rateOf(format));
    }
}

int run(std::string const& only) {
    char pattern[] = "/tmp/tavaro-bench-quality-XXXXXX";
    if (!mkdtemp(pattern)) throw std::runtime_error("No folder for the measurement could be made in /tmp.");
    fs::path const folder(pattern);
    struct Cleaner {
        fs::path folder;
        ~Cleaner() {
            std::error_code ignored;
            fs::remove_all(folder, ignored);
        }
    } const cleaner{folder};
    measure(folder, only);
    return 0;
}

}

}

int main(int count, char** values) {
    try {
        return tavaro::run(count > 1 ? values[1] : "");
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
