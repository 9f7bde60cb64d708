#include "ProcessFixture.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <sstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

std::string contents(fs::path const& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

void redirect(fs::path const& file, int descriptor) {
    int const opened = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(opened, descriptor);
    close(opened);
}

}

RunningProcess::RunningProcess(pid_t pid, fs::path out, fs::path error)
    : pid_(pid)
    , out_(std::move(out))
    , error_(std::move(error)) {}

RunningProcess::RunningProcess(RunningProcess&& other) noexcept
    : pid_(std::exchange(other.pid_, 0))
    , out_(std::move(other.out_))
    , error_(std::move(other.error_)) {}

RunningProcess::~RunningProcess() {
    if (pid_ == 0) return;
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}

void RunningProcess::send(int signal) const { kill(pid_, signal); }

bool RunningProcess::isRunning() const {
    siginfo_t state{};
    waitid(P_PID, static_cast<id_t>(pid_), &state, WEXITED | WNOHANG | WNOWAIT);
    return state.si_pid == 0;
}

Outcome RunningProcess::wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = 0;
    int const code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return {code, contents(out_), contents(error_)};
}

ProcessFixture::ProcessFixture() {
    std::string pattern = (fs::temp_directory_path() / "tavaro-program-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    setenv("HOME", folder.c_str(), 1);
    unsetenv("WAYLAND_DISPLAY"); // of who runs the tests
}

ProcessFixture::~ProcessFixture() { fs::remove_all(folder); }

RunningProcess ProcessFixture::start(std::string const& program, Arguments const& arguments,
                                     std::optional<std::size_t> fileSizeLimit) {
    auto const number = std::to_string(++processes_);
    auto const log = folder / "logs";
    fs::create_directories(log);
    fs::path const out = log / (number + ".out"), error = log / (number + ".err");
    std::vector<char*> words{const_cast<char*>(program.c_str())};
    for (auto const& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    pid_t const pid = fork();
    if (pid == 0) {
        redirect(out, STDOUT_FILENO);
        redirect(error, STDERR_FILENO);
        if (fileSizeLimit) {
            rlimit const limit{*fileSizeLimit, *fileSizeLimit};
            setrlimit(RLIMIT_FSIZE, &limit);
        }
        execvp(program.c_str(), words.data());
        _exit(127);
    }
    return {pid, out, error};
}

Outcome ProcessFixture::tavaro(Arguments const& arguments) { return start(TAVARO_PROGRAM, arguments).wait(); }

Outcome ProcessFixture::tavaroWithFilesUpTo(std::size_t bytes, Arguments const& arguments) {
    return start(TAVARO_PROGRAM, arguments, bytes).wait();
}

void ProcessFixture::ffmpeg(Arguments const& arguments) {
    Arguments all{"-hide_banner", "-loglevel", "error", "-y"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto const outcome = start("ffmpeg", all).wait();
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
}

void ProcessFixture::write(std::string const& name, std::string const& text) const {
    std::ofstream(folder / name, std::ios::binary) << text;
}

std::string ProcessFixture::read(std::string const& name) const { return contents(folder / name); }

std::vector<std::string> ProcessFixture::names(fs::path const& in) const {
    std::vector<std::string> result;
    if (!fs::exists(in)) return result;
    for (auto const& entry : fs::directory_iterator(in)) result.push_back(entry.path().filename().string());
    std::sort(result.begin(), result.end());
    return result;
}

bool ProcessFixture::becomesTrue(std::function<bool()> const& condition) {
    for (int i = 0; i < 1000; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}
