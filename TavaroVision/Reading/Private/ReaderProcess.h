#pragma once

#include <TavaroVision/Reading/ReadText.h>

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

struct LineImage;
struct ReaderReply;

/// A worker that reads lines: the program `tavaro-reader`, so that its crash, its memory and its hanging are not ours.
/// It is started with the first line, and again after it broke down. One thread at a time.
class ReaderProcess {
public:
    struct Options {
        std::vector<std::string> command;
        std::chrono::milliseconds start;
        std::chrono::milliseconds line;
    };
    explicit ReaderProcess(Options options);
    ~ReaderProcess();

    /// Starts it where it does not run, and waits until it is ready. Throws `ReaderLost`, and `VisionError`: `noReader`
    /// where no try will work, `cancelled`.
    void begin(std::stop_token const& stop);
    /// The same, and reads.
    ReadLine read(LineImage const& image, std::stop_token const& stop);

private:
    struct Running;

    void end();
    ReaderReply answer(std::chrono::milliseconds patience, std::stop_token const& stop);

    Options const options_;
    std::unique_ptr<Running> running_;
};

}
