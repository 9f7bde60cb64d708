#include <Tests/Media/Movie/NumberedMovie.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>

#include <TavaroMedia/Frames/FrameConverter.h>

namespace tavaro {

namespace {

constexpr int digits = 16;
constexpr int blockHeight = 16;

}

Image numberedImage(int width, int height, int number) {
    Image image(width, height);
    auto const blockWidth = width / digits;
    for (int y = 0; y < height; ++y) {
        auto* row = image.row(y);
        for (int x = 0; x < width; ++x, row += 4) {
            auto const digit = std::min(x / blockWidth, digits - 1);
            auto const isInk = (y / 2 % 6 < 4) && ((x + 3 * number) / 2 * 7 + y / 12 * 5) % 11 < 4;
            std::uint8_t const pattern[4] = {isInk ? std::uint8_t{40} : std::uint8_t{230},
                                             isInk ? std::uint8_t{44} : std::uint8_t{228},
                                             isInk ? std::uint8_t{52} : std::uint8_t{224}, 255};
            std::uint8_t const value = number >> digit & 1 ? 255 : 0;
            std::uint8_t const block[4] = {value, value, value, 255};
            std::memcpy(row, y < blockHeight ? block : pattern, 4);
        }
    }
    return image;
}

int numberOf(ImageView image) {
    int number = 0;
    auto const blockWidth = image.width / digits;
    for (int digit = 0; digit < digits; ++digit) {
        auto const value = image.row(blockHeight / 2)[4 * (digit * blockWidth + blockWidth / 2) + 1];
        if (value > 80 && value < 176) return -1;
        number |= (value >= 128) << digit;
    }
    return number;
}

int numberOf(VideoFrame const& frame) {
    thread_local FrameConverter converter;
    thread_local Image image;
    converter.convert(frame, image);
    return numberOf(image.view());
}

int numberAt(MovieReader& reader, double seconds) { return numberOf(reader.frame(seconds)); }

MovieWriterSettings smallMovie() {
    return {.width = 320, .height = 180, .fps = 30, .bitrate = 2'000'000, .keyFrameInterval = 15};
}

void writeNumbered(std::filesystem::path const& file, MovieWriterSettings const& settings,
                   std::vector<double> const& times, int firstNumber) {
    MovieWriter writer(file, settings);
    for (auto const time : times) {
        auto picture = writer.picture();
        fillPicture(picture, numberedImage(settings.width, settings.height, firstNumber++).view());
        writer.append(std::move(picture), time);
    }
    writer.finish();
}

std::vector<double> steadyTimes(int count, int fps) {
    std::vector<double> times;
    for (int n = 0; n < count; ++n) times.push_back(static_cast<double>(n) / fps);
    return times;
}

bool runFFmpeg(std::string const& arguments) {
    return std::system(("ffmpeg -nostdin -v quiet -y " + arguments).c_str()) == 0;
}

std::string probed(std::filesystem::path const& file, std::string const& entries) {
    auto const command = "ffprobe -v error -select_streams v:0 -show_entries " + entries +
                         " -of default=noprint_wrappers=1 '" + file.string() + "'";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    char buffer[4096];
    while (auto const count = std::fread(buffer, 1, sizeof buffer, pipe.get())) text.append(buffer, count);
    return text;
}

std::string bytesOf(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void writeBytes(std::filesystem::path const& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}
