#include <TavaroMedia/Audio/AudioFileWriter.h>

#include <new>

#include <TavaroMedia/Audio/Private/AudioEncoder.h>
#include <TavaroMedia/FFmpeg/Private/OutputStream.h>

namespace tavaro {

struct AudioFileWriter::State {
    State(std::filesystem::path const& file, AudioFileFormat format, int channels, AudioFileIntent intent)
        : encoder(file, format == AudioFileFormat::whole16 ? AudioCoding::pcm16 : AudioCoding::pcmFloat, channels)
        , output(file, intent == AudioFileIntent::live ? ffmpeg::Place::growingForOwner : ffmpeg::Place::besideForOwner,
                 "caf") {
        if (!packet) throw std::bad_alloc();
        encoder.describe(output.addStream());
        if (intent == AudioFileIntent::live) output.format().flags |= AVFMT_FLAG_FLUSH_PACKETS;
        output.begin({});
    }

    AudioEncoder encoder;
    ffmpeg::OutputStream output;
    ffmpeg::Packet packet{av_packet_alloc()};

    void drain() {
        while (encoder.receive(*packet)) output.write(*packet, audioTimeBase);
    }
};

AudioFileWriter::AudioFileWriter(std::filesystem::path const& file, AudioFileFormat format, int channels,
                                 AudioFileIntent intent)
    : state_(std::make_unique<State>(file, format, channels, intent)) {}
AudioFileWriter::AudioFileWriter(AudioFileWriter&&) noexcept = default;
AudioFileWriter& AudioFileWriter::operator=(AudioFileWriter&&) noexcept = default;
AudioFileWriter::~AudioFileWriter() = default;

void AudioFileWriter::append(std::span<StereoSample const> samples) {
    state_->encoder.send(samples);
    state_->drain();
}

void AudioFileWriter::finish() {
    state_->encoder.finish();
    state_->drain();
    state_->output.commit();
}

}
