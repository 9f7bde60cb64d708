#include "Measured.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace tavaro {

namespace {

[[noreturn]] void become(std::vector<std::string> const& arguments, char const* log) {
    int const file = open(log, O_WRONLY | O_CREAT | O_TRUNC, 0600);
    int const nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, 0);
    dup2(file, 1);
    dup2(file, 2);
    std::vector<char*> pointers;
    for (auto const& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    execvp(pointers[0], pointers.data());
    std::perror(pointers[0]);
    _exit(127);
}

}

ProcessCost runMeasured(std::vector<std::string> const& arguments) {
    char log[] = "/tmp/tavaro-bench-log-XXXXXX";
    int const placeholder = mkstemp(log);
    if (placeholder < 0) throw std::runtime_error("No file for the output of '" + arguments[0] + "' could be made.");
    close(placeholder);
    auto const start = std::chrono::steady_clock::now();
    auto const child = fork();
    if (child == 0) become(arguments, log);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
    std::ostringstream said;
    said << std::ifstream(log).rdbuf();
    unlink(log);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error("'" + arguments[0] + "' failed:\n" + said.str());
    }
    auto const seconds = [](timeval const& time) { return static_cast<double>(time.tv_sec) + time.tv_usec * 1e-6; };
    return {took.count(), seconds(usage.ru_utime) + seconds(usage.ru_stime),
            static_cast<double>(usage.ru_maxrss) / 1024};
}

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

}
