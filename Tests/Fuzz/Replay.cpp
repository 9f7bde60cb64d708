// Stands in for the fuzzer where there is none: runs a target over its corpus, then for some seconds over what damage
// makes of it. `replay-NAME SECONDS CORPUS [SEED]`; a failure prints the seed and keeps the input.

#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::string input; // at work
std::uint64_t seed = 1;

extern "C" void keepInput(int signal) {
    int const file = open("failed-input", O_WRONLY | O_CREAT | O_TRUNC, 0644);
    [[maybe_unused]] auto const kept = write(file, input.data(), input.size());
    char text[100];
    int const length = std::snprintf(text, sizeof text, "failed with seed %llu; see failed-input\n",
                                     static_cast<unsigned long long>(seed));
    [[maybe_unused]] auto const told = write(STDERR_FILENO, text, static_cast<std::size_t>(length));
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void run(std::string text) {
    input = std::move(text);
    LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
}

std::string damaged(std::vector<std::string> const& corpus, std::mt19937_64& random) {
    auto text = corpus[random() % corpus.size()];
    auto const at = [&] { return text.empty() ? 0 : random() % text.size(); };
    for (auto n = 1 + random() % 4; n > 0; --n) {
        auto const& other = corpus[random() % corpus.size()];
        auto const from = other.empty() ? 0 : random() % other.size();
        switch (random() % 6) {
        case 0: text.resize(at()); break;
        case 1: text.insert(at(), text.substr(at(), random() % 64)); break;
        case 2: text.erase(at(), random() % 16); break;
        case 3: text.insert(at(), other, from, random() % 200); break;
        default:
            if (!text.empty()) text[at()] = static_cast<char>(random() % 3 ? random() : "{}[]\",:0-e\\"[random() % 11]);
        }
    }
    return text;
}

}

int main(int argc, char** argv) {
    if (argc < 3) return 2;
    auto const end = std::chrono::steady_clock::now() + std::chrono::duration<double>(std::atof(argv[1]));
    if (argc > 3) seed = std::strtoull(argv[3], nullptr, 10);
    for (int const signal : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS}) std::signal(signal, keepInput);
    std::vector<std::string> corpus;
    for (auto const& entry : fs::directory_iterator(argv[2])) {
        std::ifstream file(entry.path(), std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        run(corpus.back());
    }
    if (corpus.empty()) return 2;
    std::mt19937_64 random(seed);
    long runs = 0;
    for (; std::chrono::steady_clock::now() < end; ++runs) run(damaged(corpus, random));
    std::printf("%zu files of the corpus and %ld damaged ones\n", corpus.size(), runs);
    return 0;
}
