#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace tavaro {

struct Outcome {
    int exitCode = -1; // 128 + the signal's number where one ended the process
    std::string out;
    std::string error;
};

/// A process that is still running; ended with SIGKILL when nobody waited for it.
class RunningProcess {
public:
    RunningProcess(pid_t pid, std::filesystem::path out, std::filesystem::path error);
    RunningProcess(RunningProcess&& other) noexcept;
    ~RunningProcess();

    void send(int signal) const;
    Outcome wait();
    bool isRunning() const;
    pid_t process() const { return pid_; }

private:
    pid_t pid_;
    std::filesystem::path out_, error_;
};

/// Runs the real program in a folder of its own that goes away with the test.
class ProcessFixture : public ::testing::Test {
protected:
    ProcessFixture();
    ~ProcessFixture() override;

    using Arguments = std::vector<std::string>;
    RunningProcess start(std::string const& program, Arguments const& arguments,
                         std::optional<std::size_t> fileSizeLimit = {});
    Outcome tavaro(Arguments const& arguments);
    /// As on a disk that is full after so many bytes of a file.
    Outcome tavaroWithFilesUpTo(std::size_t bytes, Arguments const& arguments);
    /// Runs ffmpeg quietly; fails the test when it fails.
    void ffmpeg(Arguments const& arguments);
    std::string path(std::string const& name) const { return (folder / name).string(); }
    void write(std::string const& name, std::string const& text) const;
    std::string read(std::string const& name) const;
    std::vector<std::string> names(std::filesystem::path const& in) const;

    /// Asks every 10 ms, for ten seconds at most.
    static bool becomesTrue(std::function<bool()> const& condition);

    std::filesystem::path folder;

private:
    int processes_ = 0;
};

}
