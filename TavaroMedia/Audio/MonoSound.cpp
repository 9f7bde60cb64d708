#include <TavaroMedia/Audio/MonoSound.h>

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Audio/Private/AudioDecoder.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>
#include <TavaroMedia/FFmpeg/Private/Handles.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <sys/mman.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

namespace tavaro {

namespace {

using Kind = MediaError::Kind;

static_assert(std::endian::native == std::endian::little, "WAV files are read and written as they are in memory");

constexpr int lowestRate = 1000, highestRate = 768'000;
constexpr float fullScale = 32'768;

[[noreturn]] void failWAV(std::string const& reason) {
    throw MediaError(Kind::unreadable, "The sound cannot be read: " + reason + ".", reason);
}

template<class Number> Number numberAt(std::string_view bytes, std::size_t at) {
    if (bytes.size() < at + sizeof(Number)) failWAV("it ends in its header");
    Number number{};
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

/// What follows the name and length of a part.
struct Parts {
    std::string_view format, data;
};

Parts partsOf(std::string_view bytes) {
    if (!bytes.starts_with("RIFF") || bytes.substr(std::min<std::size_t>(8, bytes.size()), 4) != "WAVE")
        failWAV("it is no WAV file");
    Parts parts;
    for (std::size_t at = 12; at + 8 <= bytes.size();) {
        auto const name = bytes.substr(at, 4);
        std::size_t const length = numberAt<std::uint32_t>(bytes, at + 4);
        auto const content = bytes.substr(at + 8, length);
        if (name == "fmt ") parts.format = content;
        if (name == "data") {
            parts.data = content;
            break;
        }
        at += 8 + length + length % 2;
    }
    if (!parts.data.data()) failWAV("it has no samples");
    return parts;
}

ffmpeg::Resampler makeResampler(int from, int to) {
    AVChannelLayout mono = AV_CHANNEL_LAYOUT_MONO;
    SwrContext* raw = nullptr;
    auto code = swr_alloc_set_opts2(&raw, &mono, AV_SAMPLE_FMT_FLT, to, &mono, AV_SAMPLE_FMT_FLT, from, 0, nullptr);
    ffmpeg::Resampler resampler(raw);
    if (code >= 0) code = swr_init(raw);
    if (code < 0) throwReadingAudio(Kind::unsupported, ffmpeg::reason(code));
    return resampler;
}

/// A file without a name, since readers want files.
FileDescriptor fileOf(std::string_view bytes) {
    FileDescriptor file(::memfd_create("sound", MFD_CLOEXEC));
    auto const code = file.isOpen() ? file.write(std::as_bytes(std::span(bytes))) : errno;
    if (code != 0) throwReadingAudio(Kind::unreadable, std::strerror(code));
    return file;
}

}

MonoSound resampled(MonoSound const& sound, int rate) {
    if (std::min(sound.rate, rate) < lowestRate || std::max(sound.rate, rate) > highestRate)
        throwReadingAudio(Kind::unsupported, "its rate is none of a sound");
    if (sound.rate == rate || sound.samples.empty()) return {sound.samples, rate};
    auto const resampler = makeResampler(sound.rate, rate);
    auto const length = static_cast<std::size_t>(
        std::llround(static_cast<double>(sound.samples.size()) * rate / static_cast<double>(sound.rate)));
    MonoSound result{std::vector<float>(length), rate};
    std::size_t filled = 0;
    auto const convert = [&](float const* samples, int count) {
        auto const* in = reinterpret_cast<std::uint8_t const*>(samples);
        auto* out = reinterpret_cast<std::uint8_t*>(result.samples.data() + filled);
        auto const written =
            swr_convert(resampler.get(), &out, static_cast<int>(length - filled), samples ? &in : nullptr, count);
        if (written < 0) throwReadingAudio(Kind::unreadable, ffmpeg::reason(written));
        filled += static_cast<std::size_t>(written);
        return written;
    };
    constexpr std::size_t slice = 1 << 16;
    for (std::size_t at = 0; at < sound.samples.size(); at += slice)
        convert(sound.samples.data() + at, static_cast<int>(std::min(slice, sound.samples.size() - at)));
    while (filled < length && convert(nullptr, 0) > 0) {
    }
    return result;
}

std::string wavBytes(MonoSound const& sound) {
    auto const bytes = static_cast<std::uint32_t>(sound.samples.size() * sizeof(std::int16_t));
    std::string file;
    file.reserve(bytes + 44);
    auto const number = [&](auto value) { file.append(reinterpret_cast<char const*>(&value), sizeof value); };
    auto const rate = static_cast<std::uint32_t>(sound.rate);
    file += "RIFF", number(std::uint32_t{bytes + 36}), file += "WAVEfmt ", number(std::uint32_t{16});
    number(std::uint16_t{1}), number(std::uint16_t{1}), number(rate), number(std::uint32_t{rate * 2});
    number(std::uint16_t{2}), number(std::uint16_t{16}), file += "data", number(bytes);
    for (auto const sample : sound.samples)
        number(static_cast<std::int16_t>(std::clamp(std::round(sample * fullScale), -fullScale, fullScale - 1)));
    return file;
}

MonoSound soundOfWAV(std::string_view bytes) {
    auto const [format, data] = partsOf(bytes);
    auto const channels = numberAt<std::uint16_t>(format, 2);
    auto const rate = numberAt<std::uint32_t>(format, 4);
    if (numberAt<std::uint16_t>(format, 0) != 1 || numberAt<std::uint16_t>(format, 14) != 16 || channels == 0)
        failWAV("its samples are not of 16 bits");
    if (rate < lowestRate || rate > highestRate) failWAV("its rate is none of a sound");
    std::size_t const step = channels * sizeof(std::int16_t);
    MonoSound sound{{}, static_cast<int>(rate)};
    sound.samples.reserve(data.size() / step);
    for (std::size_t at = 0; at + step <= data.size(); at += step)
        sound.samples.push_back(static_cast<float>(numberAt<std::int16_t>(data, at)) / fullScale);
    return sound;
}

MonoSound soundOfFile(std::string_view bytes, double mostSeconds) {
    auto const file = fileOf(bytes);
    AudioReader reader("/proc/self/fd/" + std::to_string(file.get()));
    auto const most = static_cast<std::size_t>(mostSeconds * audioRate);
    MonoSound sound{{}, audioRate};
    std::vector<StereoSample> piece(audioRate);
    for (std::size_t count = piece.size(); count == piece.size();) {
        count = reader.read(static_cast<std::int64_t>(sound.samples.size()), piece);
        for (std::size_t i = 0; i < count; ++i) sound.samples.push_back((piece[i].left + piece[i].right) / 2);
        if (sound.samples.size() > most) throwReadingAudio(Kind::unsupported, "it is too long");
    }
    return sound;
}

}
