// The agents' server as its client meets it: how soon it answers after it is started, and a ping after that.

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace tavaro {

namespace {

constexpr int starts = 51;
constexpr int pings = 10'000;

class Server {
public:
    Server() {
        int input[2], output[2];
        if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0)
            throw std::runtime_error("There are no pipes.");
        process_ = fork();
        if (process_ == 0) {
            dup2(input[0], STDIN_FILENO);
            dup2(output[1], STDOUT_FILENO);
            execl(TAVARO_MCP, "tavaro-mcp", nullptr);
            _exit(127);
        }
        close(input[0]);
        close(output[1]);
        in_ = FileDescriptor(input[1]);
        out_ = FileDescriptor(output[0]);
    }
    ~Server() {
        in_.close();
        waitpid(process_, nullptr, 0);
    }
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    /// Sends a line and waits for its answer, which it must hold.
    void ask(std::string const& line, std::string const& expected) {
        if (in_.write(std::as_bytes(std::span(line))) != 0) throw std::runtime_error("tavaro-mcp takes nothing.");
        while (true) {
            if (auto const answer = lines_.next()) {
                if (answer->find(expected) == answer->npos)
                    throw std::runtime_error("Not expected: " + std::string(*answer));
                return;
            }
            auto const count = read(out_.get(), room_.data(), room_.size());
            if (count <= 0) throw std::runtime_error("tavaro-mcp ended.");
            lines_.feed({room_.data(), static_cast<std::size_t>(count)});
        }
    }

private:
    pid_t process_ = 0;
    FileDescriptor in_, out_;
    LineSplitter lines_{std::size_t{1} << 20};
    std::vector<char> room_ = std::vector<char>(std::size_t{1} << 16);
};

template<class Work> double millisecondsOf(Work const& work) {
    auto const began = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count();
}

double quantile(std::vector<double>& sorted, double share) {
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

void measureStart() {
    std::vector<double> times;
    for (int i = 0; i < starts; ++i) {
        std::unique_ptr<Server> server;
        times.push_back(millisecondsOf([&] {
            server = std::make_unique<Server>();
            server->ask("{\"id\":1,\"method\":\"initialize\",\"params\":{\"clientInfo\":{\"name\":\"bench\"}}}\n",
                        "serverInfo");
        }));
    }
    std::ranges::sort(times);
    std::printf("mcp.start %.2f ms\n", quantile(times, 0.5));
}

void measurePing() {
    Server server;
    std::vector<double> times;
    for (int i = 0; i < pings; ++i)
        times.push_back(millisecondsOf([&] { server.ask("{\"id\":2,\"method\":\"ping\"}\n", "\"result\":{}"); }));
    std::ranges::sort(times);
    std::printf("mcp.ping.p50 %.4f ms\nmcp.ping.p99 %.4f ms\n", quantile(times, 0.5), quantile(times, 0.99));
}

}

}

int main() {
    try {
        tavaro::measureStart();
        tavaro::measurePing();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
