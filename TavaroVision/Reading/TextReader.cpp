#include <TavaroVision/Reading/Private/TextReader.h>

#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Queues/SerialQueue.h>
#include <TavaroVision/Errors/VisionError.h>
#include <TavaroVision/Reading/Private/ReaderProcess.h>
#include <TavaroVision/Reading/ReaderTalk.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <unistd.h>

namespace tavaro {

namespace {

using Kind = VisionError::Kind;

constexpr char const* readerName = "tavaro-reader";
constexpr char const* language = "eng";
constexpr int mostWorkers = 16;
constexpr int mostTries = 2;     // for a line, and to begin
constexpr int hopelessLines = 4; // left out one after the other

int processors() { return static_cast<int>(std::max(::sysconf(_SC_NPROCESSORS_ONLN), 1L)); }

std::string programOf(TextReader::Options const& options) {
    if (options.program) return options.program->string();
    if (auto const found = findHiddenProgram(readerName)) return found->string();
    throw VisionError(Kind::noReader, "Text on the screen cannot be read: the program tavaro-reader is missing. "
                                      "Install the package tavaro again.");
}

bool isWhole(LineImage const& image) {
    auto const size = sizeOf(headOf(image));
    return size && size->pixels() == image.pixels.size();
}

struct Worker {
    explicit Worker(ReaderProcess::Options const& options) : process(options) {}

    ReaderProcess process; // the queue's thread
    SerialQueue queue{"com.tavaro.vision.reader"};
};

/// What outlives a call of `read`. Any worker's thread.
struct Losses {
    std::atomic<std::size_t> total = 0;
    std::atomic<int> inARow = 0;
};

/// One call of `read`. The workers' threads take line by line.
class Reading {
public:
    Reading(std::span<LineImage const> lines, std::stop_token stop, Losses& losses)
        : lines_(lines)
        , read_(lines.size())
        , stop_(std::move(stop))
        , losses_(losses) {}

    void work(ReaderProcess& process) {
        // Whoever cancels, and whoever fails, ends what the workers do.
        std::stop_callback const pass(stop_, [this] { ending_.request_stop(); });
        if (!attempt([&] { begin(process); })) return; // all lines are left to the others
        bool const isDone = attempt([&] {
            for (auto at = next_++; at < lines_.size(); at = next_++) {
                read_[at] = read(lines_[at], process);
                ++done_;
            }
        });
        if (!isDone) ending_.request_stop();
    }

    /// When all have worked.
    std::vector<ReadLine> result() {
        if (stop_.stop_requested()) throwCancelled();
        if (done_ < lines_.size()) std::rethrow_exception(failure_);
        return std::move(read_);
    }

private:
    [[noreturn]] static void throwCancelled() {
        throw VisionError(Kind::cancelled, "Reading the screen was cancelled.");
    }

    [[noreturn]] static void throwBroken(ReaderLost const& error) {
        throw VisionError(Kind::broken, "Text on the screen cannot be read: " + std::string(error.what()) + ".");
    }

    template<class Task> bool attempt(Task const& task) {
        try {
            task();
            return true;
        } catch (...) {
            std::lock_guard const lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
            return false;
        }
    }

    void begin(ReaderProcess& process) const {
        for (int tries = 1;; ++tries) {
            try {
                process.begin(ending_.get_token());
                return;
            } catch (ReaderLost const& error) {
                if (tries == mostTries) throwBroken(error);
            }
        }
    }

    ReadLine read(LineImage const& image, ReaderProcess& process) {
        ReadLine const nothing{.box = image.line, .words = {}};
        if (!isWhole(image)) return nothing;
        for (int tries = 1;; ++tries) {
            try {
                auto line = process.read(image, ending_.get_token());
                losses_.inARow = 0;
                return line;
            } catch (ReaderLost const& error) {
                if (tries < mostTries) continue;
                ++losses_.total;
                if (++losses_.inARow < hopelessLines) return nothing;
                throwBroken(error);
            }
        }
    }

    std::span<LineImage const> const lines_;
    std::vector<ReadLine> read_;
    std::stop_token const stop_;
    Losses& losses_;
    std::stop_source ending_;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<std::size_t> done_ = 0;
    std::mutex mutex_;
    std::exception_ptr failure_; // the first; with the lock
};

}

struct TextReader::State {
    explicit State(Options const& options) {
        ReaderProcess::Options const process{
            .command = {programOf(options), language}, .start = options.start, .line = options.line};
        auto const count = std::min(options.workers > 0 ? options.workers : processors(), mostWorkers);
        for (int i = 0; i < count; ++i) workers.push_back(std::make_unique<Worker>(process));
    }

    Losses losses;
    std::vector<std::unique_ptr<Worker>> workers;
};

TextReader::TextReader() : TextReader(Options()) {}
TextReader::TextReader(Options const& options) : state_(std::make_unique<State>(options)) {}
TextReader::~TextReader() = default;

std::vector<ReadLine> TextReader::read(std::span<LineImage const> lines, std::stop_token const& stop) {
    Reading reading(lines, stop, state_->losses);
    auto const used = std::span(state_->workers).first(std::min(lines.size(), state_->workers.size()));
    for (auto const& worker : used) worker->queue.async([&] { reading.work(worker->process); });
    for (auto const& worker : used) worker->queue.sync([] {});
    return reading.result();
}

std::size_t TextReader::leftOut() const { return state_->losses.total; }

}
