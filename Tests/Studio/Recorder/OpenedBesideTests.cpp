#include <Tavaro/Studio/Recorder/OpenedBeside.h>

#include <TavaroCore/Errors/Error.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace tavaro;

namespace {

std::atomic<int> openDevices = 0;
std::atomic<bool> isClosedOnMain = false;

struct Device {
    explicit Device(int number) : number(number) { ++openDevices; }
    ~Device() {
        --openDevices;
        if (std::this_thread::get_id() == mainThread) isClosedOnMain = true;
    }
    int const number;
    static inline std::thread::id const mainThread = std::this_thread::get_id();
};

}

TEST(OpenedBeside, theLastWishCountsAndNoDeviceIsEverOpenTwice) {
    MainQueue queue;
    std::atomic<int> mostOpen = 0;
    auto const device = [&](int number) {
        return [&mostOpen, number] {
            auto made = std::make_unique<Device>(number);
            mostOpen = std::max<int>(mostOpen, openDevices);
            return made;
        };
    };
    int told = 0;
    {
        OpenedBeside<Device> beside(queue, "com.tavaro.test.device");
        for (int number = 1; number <= 20; ++number) {
            beside.open(device(number), [&](std::exception_ptr const& failure) {
                EXPECT_FALSE(failure);
                ++told;
            });
            if (number % 3 == 0) queue.runUntil([&] { return beside.get() != nullptr; });
            if (number % 5 == 0) beside.close();
        }
        beside.open(device(99), [&](std::exception_ptr const&) { ++told; });
        queue.runUntil([&] { return beside.get() != nullptr; });
        EXPECT_EQ(beside.get()->number, 99);
        EXPECT_EQ(told, 7) << "of those that somebody waited for";
        bool isClosed = false;
        beside.close([&] {
            isClosed = true;
            EXPECT_EQ(openDevices, 0);
        });
        EXPECT_EQ(beside.get(), nullptr);
        queue.runUntil([&] { return isClosed; });
        beside.open([]() -> std::unique_ptr<Device> { throw Error("It is not there."); },
                    [&](std::exception_ptr const& failure) { told = failure ? -1 : 0; });
        queue.runUntil([&] { return told < 7; });
        EXPECT_EQ(told, -1);
        beside.open(device(100), [](std::exception_ptr const&) {});
    }
    EXPECT_EQ(openDevices, 0) << "whoever goes away closes it";
    EXPECT_EQ(mostOpen, 1);
    EXPECT_FALSE(isClosedOnMain) << "closing may wait for the device";
}
