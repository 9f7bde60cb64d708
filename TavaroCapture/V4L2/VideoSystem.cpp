#include <TavaroCapture/V4L2/Private/VideoSystem.h>

#include <TavaroCore/Files/FileDescriptor.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <map>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

namespace tavaro::v4l2 {

namespace fs = std::filesystem;

namespace {

class KernelDevice final : public VideoDevice {
public:
    explicit KernelDevice(int descriptor) : descriptor_(descriptor) {}
    ~KernelDevice() override {
        for (auto const& part : mapped_) munmap(const_cast<std::uint8_t*>(part.data()), part.size());
    }

    int control(unsigned long request, void* argument) override {
        int result = 0;
        do result = ioctl(descriptor_.get(), request, argument);
        while (result < 0 && errno == EINTR);
        return result;
    }
    std::span<std::uint8_t const> map(std::size_t length, std::int64_t offset) override {
        void* const memory = mmap(nullptr, length, PROT_READ, MAP_SHARED, descriptor_.get(), offset);
        if (memory == MAP_FAILED) return {};
        return mapped_.emplace_back(static_cast<std::uint8_t const*>(memory), length);
    }
    int poll(int milliseconds) override {
        pollfd waited{.fd = descriptor_.get(), .events = POLLIN};
        return ::poll(&waited, 1, milliseconds);
    }

private:
    FileDescriptor const descriptor_;
    std::vector<std::span<std::uint8_t const>> mapped_;
};

/// The names that the system gives devices by what they are, by the nodes that they lead to.
std::map<fs::path, std::string> lastingNames() {
    std::map<fs::path, std::string> result;
    std::error_code error;
    for (auto const& link : fs::directory_iterator("/dev/v4l/by-id", error)) {
        auto const node = fs::canonical(link.path(), error);
        if (!error) result.emplace(node, link.path().filename().string());
    }
    return result;
}

/// "video12" → 12; −1 for another name.
int numberOf(std::string const& name) {
    constexpr std::string_view start = "video";
    bool const fits = name.starts_with(start) && name.size() > start.size() && name.size() < start.size() + 6 &&
                      std::all_of(name.begin() + start.size(), name.end(), [](char c) { return c >= '0' && c <= '9'; });
    return fits ? std::stoi(name.substr(start.size())) : -1;
}

class KernelVideo final : public VideoSystem {
public:
    std::vector<VideoNode> nodes() const override {
        std::map<int, VideoNode> found;
        auto const names = lastingNames();
        std::error_code error;
        for (auto const& entry : fs::directory_iterator("/dev", error)) {
            auto const name = entry.path().filename().string();
            auto const lasting = names.find(entry.path());
            if (int const number = numberOf(name); number >= 0)
                found[number] = {entry.path(), lasting == names.end() ? name : lasting->second};
        }
        std::vector<VideoNode> result;
        for (auto& [number, node] : found) result.push_back(std::move(node));
        return result;
    }
    std::unique_ptr<VideoDevice> open(fs::path const& path) const override {
        int const descriptor = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (descriptor < 0) return nullptr;
        return std::make_unique<KernelDevice>(descriptor);
    }
};

}

std::shared_ptr<VideoSystem const> kernelVideo() {
    static auto const system = std::make_shared<KernelVideo const>();
    return system;
}

}
