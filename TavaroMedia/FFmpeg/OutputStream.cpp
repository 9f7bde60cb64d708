#include <TavaroMedia/FFmpeg/Private/OutputStream.h>

#include <cerrno>
#include <new>
#include <utility>

#include <unistd.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroMedia/FFmpeg/Private/Failures.h>

extern "C" {
#include <libavutil/mem.h>
}

namespace tavaro::ffmpeg {

namespace {

constexpr int ioBufferSize = 256 * 1024;
constexpr auto ownerOnly = std::filesystem::perms(0600);

}

void OutputStream::FreeIO::operator()(AVIOContext* io) const {
    av_freep(&io->buffer);
    avio_context_free(&io);
}

OutputStream::OutputStream(std::filesystem::path file, Place place, char const* format) : file_(std::move(file)) {
    open(place);
    prepareLibraries();
    AVFormatContext* context = nullptr;
    checkWriting(file_, avformat_alloc_output_context2(&context, nullptr, format, writtenPath().c_str()));
    format_.reset(context);
    auto* buffer = static_cast<unsigned char*>(av_malloc(ioBufferSize));
    if (!buffer) throw std::bad_alloc();
    io_.reset(avio_alloc_context(buffer, ioBufferSize, 1, this, nullptr, writeBytes, seekBytes));
    if (!io_) {
        av_free(buffer);
        throw std::bad_alloc();
    }
    format_->pb = io_.get();
    format_->flags |= AVFMT_FLAG_CUSTOM_IO;
}

OutputStream::~OutputStream() = default;

void OutputStream::open(Place place) {
    auto const permissions = place == Place::beside ? FileDescriptor::everyone : ownerOnly;
    if (place != Place::growingForOwner) return writing(file_, [&] { pending_.emplace(file_, permissions); });
    grown_ = FileDescriptor::open(file_, FileDescriptor::Opening::overwriting, permissions);
    if (!grown_.isOpen()) throwWriting(file_, -errno);
}

int OutputStream::writeBytes(void* self, std::uint8_t* bytes, int count) {
    auto& stream = *static_cast<OutputStream*>(self);
    auto const error = stream.writeToFile(std::as_bytes(std::span(bytes, static_cast<std::size_t>(count))));
    if (error == 0) return count;
    if (stream.fileError_ == 0) stream.fileError_ = error;
    return AVERROR(error);
}

int OutputStream::writeToFile(std::span<std::byte const> bytes) {
    return pending_ ? pending_->write(bytes) : grown_.write(bytes);
}

std::int64_t OutputStream::seekBytes(void* self, std::int64_t offset, int whence) {
    if (whence == AVSEEK_SIZE) return AVERROR(ENOSYS);
    auto const position = ::lseek(static_cast<OutputStream*>(self)->descriptor().get(), offset, whence & ~AVSEEK_FORCE);
    return position < 0 ? AVERROR(errno) : position;
}

void OutputStream::check(int code) {
    if (fileError_ != 0) throwWriting(file(), -fileError_);
    if (code < 0) throwWriting(file(), code);
}

AVStream& OutputStream::addStream() {
    auto* stream = avformat_new_stream(format_.get(), nullptr);
    if (!stream) throw std::bad_alloc();
    return *stream;
}

void OutputStream::begin(Dictionary options) {
    auto* raw = options.release();
    auto const code = avformat_write_header(format_.get(), &raw);
    options.reset(raw);
    check(code);
}

void OutputStream::write(AVPacket& packet, AVRational timeBase, int stream) {
    packet.stream_index = stream;
    av_packet_rescale_ts(&packet, timeBase, format_->streams[stream]->time_base);
    auto const isAlone = format_->nb_streams == 1;
    auto const code =
        isAlone ? av_write_frame(format_.get(), &packet) : av_interleaved_write_frame(format_.get(), &packet);
    av_packet_unref(&packet);
    check(code);
}

void OutputStream::complete() {
    check(av_write_trailer(format_.get()));
    avio_flush(io_.get());
    check(io_->error);
}

void OutputStream::commit() {
    complete();
    if (pending_) return writing(file_, [&] { pending_->commit(); });
    if (int const failure = grown_.sync()) throwWriting(file_, -failure);
    grown_.close();
    FileDescriptor::syncFolderOf(file_);
}

std::filesystem::path OutputStream::commitUnderUnusedName(std::filesystem::path const& wanted) {
    complete();
    return writing(file_, [&] { return tavaro::commitUnderUnusedName(pending_.value(), wanted); });
}

Dictionary indexInFront() {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart", 0);
    return Dictionary(options);
}

}
