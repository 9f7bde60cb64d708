#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// Whether this user may read the machine's keyboards and pointers, found out without opening any.
struct InputAccess {
    struct Count {
        int all = 0;
        int readable = 0;
    };
    Count keyboards;
    Count pointers;
    std::optional<std::string> problem; // a sentence; none: all of them can be read
    struct Remedy {
        std::string when; // what it means, as a sentence
        std::vector<std::string> commands;
    };
    std::vector<Remedy> remedies; // one of them is enough
};

/// `devices` has the files of the devices, `classes` what the kernel tells everybody of them.
InputAccess inputAccess(std::filesystem::path const& devices = "/dev/input",
                        std::filesystem::path const& classes = "/sys/class/input");

}
