#include <TavaroMedia/FFmpeg/Private/OpenInput.h>

#include <TavaroCore/Files/PlainFile.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

namespace tavaro::ffmpeg {

namespace {

using Kind = MediaError::Kind;

constexpr char const* containers =
    "mov,matroska,avi,mpegts,mpeg,flv,asf,ogg,mxf,nut,ivf,h264,hevc,gif,apng,yuv4mpegpipe,wav,mp3,flac,aac,aiff,caf";

void checkIsPlainFile(std::filesystem::path const& file) {
    auto const plain = reading(file, [&] { return PlainFile::open(file, PlainFile::anySize); });
    if (!plain) throwReading(file, AVERROR(ENOENT));
    if (plain->size == 0) throwReading(file, Kind::unreadable, "it is empty");
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
