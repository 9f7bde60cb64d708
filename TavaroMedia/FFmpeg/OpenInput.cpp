#include <TavaroMedia/FFmpeg/Private/OpenInput.h>

#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro::ffmpeg {

namespace {

using Kind = MediaError::Kind;

constexpr char const* containers =
    "mov,matroska,avi,mpegts,mpeg,flv,asf,ogg,mxf,nut,ivf,h264,hevc,gif,apng,yuv4mpegpipe,wav,mp3,flac,aac,aiff,caf";

void checkIsPlainFile(std::filesystem::path const& file) {
    std::error_code error;
    auto const status = std::filesystem::status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) throwReading(file, AVERROR(ENOENT));
    if (error) throwReading(file, AVERROR(error.value()));
    if (status.type() == std::filesystem::file_type::directory) throwReading(file, AVERROR(EISDIR));
    if (status.type() != std::filesystem::file_type::regular)
        throwReading(file, Kind::unreadable, "it is not a plain file");
    if (std::filesystem::file_size(file, error) == 0 && !error) throwReading(file, Kind::unreadable, "it is empty");
}

}

Input openInput(std::filesystem::path const& file) {
    prepareLibraries();
    checkIsPlainFile(file);
    AVDictionary* raw = nullptr;
    av_dict_set(&raw, "format_whitelist", containers, 0);
    av_dict_set(&raw, "protocol_whitelist", "file", 0);
    AVFormatContext* context = nullptr;
    auto code = avformat_open_input(&context, ("file:" + file.string()).c_str(), nullptr, &raw);
    av_dict_free(&raw);
    if (code < 0) throwReading(file, code);
    Input input(context);
    if (code = avformat_find_stream_info(input.get(), nullptr); code < 0) throwReading(file, code);
    return input;
}

bool isPicture(AVStream const& stream) {
    return stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !(stream.disposition & AV_DISPOSITION_ATTACHED_PIC);
}

}
