#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace tavaro::pipewire {

/// Memory of a graphics card or another device that this process reads by itself. Reading may cost several times what
/// plain memory does.
class GraphicsMemory {
public:
    /// All from there on to its end; nothing, with `errno` set, where it cannot be read like that. The descriptor must
    /// outlive the object.
    static std::unique_ptr<GraphicsMemory> map(int descriptor, std::size_t offset);
    ~GraphicsMemory();
    GraphicsMemory(GraphicsMemory const&) = delete;
    GraphicsMemory& operator=(GraphicsMemory const&) = delete;

    std::span<std::uint8_t const> bytes() const;

    /// While it lives, what the device has written is there to be read, and it writes no more.
    class Reading {
    public:
        explicit Reading(GraphicsMemory const& memory);
        ~Reading();
        Reading(Reading const&) = delete;
        Reading& operator=(Reading const&) = delete;
        /// Or else what is read may be of several pictures.
        bool isWhole() const { return isWhole_; }

    private:
        int const descriptor_;
        bool isWhole_;
    };

private:
    GraphicsMemory(int descriptor, void* pages, std::size_t size, std::size_t offset);

    int const descriptor_;
    void* const pages_;
    std::size_t const size_;
    std::size_t const offset_;
};

}
