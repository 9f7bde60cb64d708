#include <TavaroVision/Reading/Private/ReaderProcess.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>
#include <TavaroVision/Errors/VisionError.h>
#include <TavaroVision/Reading/Private/LineImage.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <utility>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds step{50}; // between looks at whether to stop

// Threads of the engine's own cost more than they give over a line; it counts them before its `main`.
std::vector<std::string> const oneThread{"OMP_THREAD_LIMIT=1"};

VisionError unreadable(std::string const& reason) {
    return {VisionError::Kind::noReader, "Text on the screen cannot be read: " + reason};
}

}

struct ReaderProcess::Running {
    explicit Running(ConnectedProcess started)
        : process(std::move(started))
        , lines(process.socket(), longestReaderReply) {}

    ConnectedProcess process;
    LineReader lines;
};

ReaderProcess::ReaderProcess(Options options) : options_(std::move(options)) {}

ReaderProcess::~ReaderProcess() { end(); }

ReadLine ReaderProcess::read(LineImage const& image, std::stop_token const& stop) {
    try {
        begin(stop);
        auto const head = headOf(image);
        auto const& socket = running_->process.socket();
        std::string_view const pixels(reinterpret_cast<char const*>(image.pixels.data()), image.pixels.size());
        if (!socket.sendAll({head.data(), head.size()}, options_.line) || !socket.sendAll(pixels, options_.line))
            throw ReaderLost("the text reader broke down");
        return readLine(image, answer(options_.line, stop).letters);
    } catch (...) {
        end();
        throw;
    }
}

void ReaderProcess::begin(std::stop_token const& stop) {
    if (running_) return;
    auto process = ConnectedProcess::start(options_.command, oneThread);
    if (!process) throw unreadable("“" + excerpt(options_.command.front()) + "” does not start.");
    running_ = std::make_unique<Running>(std::move(*process));
    try {
        auto const ready = answer(options_.start, stop);
        if (ready.failure) throw unreadable(excerpt(*ready.failure));
    } catch (...) {
        end();
        throw;
    }
}

void ReaderProcess::end() {
    if (running_) running_->process.kill();
    running_.reset();
}

ReaderReply ReaderProcess::answer(std::chrono::milliseconds patience, std::stop_token const& stop) {
    auto const deadline = Clock::now() + patience;
    while (!running_->lines.awaitBeginning(step)) {
        if (stop.stop_requested()) break;
        if (Clock::now() > deadline) throw ReaderLost("the text reader took too long");
    }
    if (stop.stop_requested()) throw VisionError(VisionError::Kind::cancelled, "Reading the screen was cancelled.");
    auto const line = running_->lines.next(patience);
    if (!line) throw ReaderLost("the text reader broke down");
    return readReaderReply(*line);
}

}
