#include <TavaroCapture/Input/InputAccess.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <grp.h>
#include <linux/input-event-codes.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// Which keys and buttons a device has: words of a machine's length in hexadecimal, the highest first.
class KeyBits {
public:
    explicit KeyBits(std::string_view text) {
        while (!text.empty()) {
            auto const word = text.substr(0, text.find_first_of(" \n"));
            text.remove_prefix(std::min(text.size(), word.size() + 1));
            unsigned long bits = 0;
            if (!word.empty() && std::from_chars(word.data(), word.data() + word.size(), bits, 16).ec == std::errc())
                words_.insert(words_.begin(), bits);
        }
    }
    bool has(unsigned code) const {
        constexpr unsigned length = sizeof(unsigned long) * 8;
        return code / length < words_.size() && ((words_[code / length] >> (code % length)) & 1) != 0;
    }

private:
    std::vector<unsigned long> words_; // the lowest first
};

KeyBits keysOf(fs::path const& classes, fs::path const& device) {
    std::array<std::byte, 1024> bytes{};
    auto const file = FileDescriptor::open(classes / device.filename() / "device" / "capabilities" / "key",
                                           FileDescriptor::Opening::reading);
    auto const count = file.isOpen() ? file.read(bytes) : 0;
    return KeyBits(
        {reinterpret_cast<char const*>(bytes.data()), static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0))});
}

std::vector<fs::path> eventDevices(fs::path const& folder) {
    std::vector<fs::path> result;
    std::error_code code;
    for (fs::directory_iterator each(folder, code), end; !code && each != end; each.increment(code))
        if (each->path().filename().string().starts_with("event")) result.push_back(each->path());
    std::ranges::sort(result);
    return result;
}

/// The group whose members may read the device; empty where there is none.
std::string groupOf(fs::path const& device) {
    struct stat status {};
    if (::stat(device.c_str(), &status) != 0 || (status.st_mode & S_IRGRP) == 0) return {};
    auto const* const group = ::getgrgid(status.st_gid);
    bool const isForOthers = group && group->gr_gid != 0;
    return isForOthers ? group->gr_name : "";
}

std::string problemOf(InputAccess const& access) {
    auto const isClosed = [](InputAccess::Count const& count) { return count.readable < count.all; };
    bool const keyboards = isClosed(access.keyboards), pointers = isClosed(access.pointers);
    if (access.keyboards.all + access.pointers.all == 0)
        return "This machine shows no keyboards and no mice: there is nothing to read clicks and keys from.";
    return fmt::format("Your user may not read {} yet.", keyboards && pointers ? "the keyboard and the mouse"
                                                         : keyboards           ? "the keyboard"
                                                                               : "the mouse");
}

std::vector<InputAccess::Remedy> remediesFor(std::string const& group) {
    constexpr char const* rule = "/etc/udev/rules.d/70-tavaro-input.rules";
    std::vector<InputAccess::Remedy> result{
        {"For who sits at this machine, whoever it is, from now on:",
         {fmt::format(R"(echo 'SUBSYSTEM=="input", KERNEL=="event*", TAG+="uaccess"' | sudo tee {})", rule),
          "sudo udevadm control --reload", "sudo udevadm trigger --subsystem-match=input --action=change"}}};
    if (!group.empty())
        result.push_back({"For your user alone, also from afar, from the next log-in on:",
                          {fmt::format(R"(sudo usermod --append --groups {} "$USER")", group)}});
    return result;
}

}

InputAccess inputAccess(fs::path const& devices, fs::path const& classes) {
    InputAccess result;
    std::string group;
    for (auto const& device : eventDevices(devices)) {
        auto const keys = keysOf(classes, device);
        bool const isReadable = ::access(device.c_str(), R_OK) == 0;
        for (auto [code, count] : {std::pair{KEY_A, &result.keyboards}, std::pair{BTN_LEFT, &result.pointers}}) {
            if (!keys.has(static_cast<unsigned>(code))) continue;
            ++count->all;
            if (isReadable) ++count->readable;
            if (!isReadable && group.empty()) group = groupOf(device);
        }
    }
    int const all = result.keyboards.all + result.pointers.all;
    if (all > 0 && all == result.keyboards.readable + result.pointers.readable) return result;
    result.problem = problemOf(result);
    if (all > 0) result.remedies = remediesFor(group);
    return result;
}

}
