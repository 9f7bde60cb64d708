#include <TavaroPlatform/Processes/ConnectedProcess.h>
#include <TavaroPlatform/Sockets/LineReader.h>

#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using namespace tavaro;
using namespace std::chrono_literals;

TEST(ConnectedProcess, isTalkedToAndEndsWithItsObjectEvenOneThatDoesNotListen) {
    EXPECT_FALSE(ConnectedProcess::start({"/no/such/program"}));
    EXPECT_FALSE(ConnectedProcess::start({}));
    for (std::string const end : {"cat >&2", "trap '' TERM HUP; while true; do sleep 0.1; done"}) {
        auto const begun = std::chrono::steady_clock::now();
        pid_t process = 0;
        {
            auto program = ConnectedProcess::start({"/bin/sh", "-c", "read line; echo \"$$ $line\"; " + end});
            ASSERT_TRUE(program);
            ASSERT_TRUE(program->socket().sendAll("hello\n", 5s));
            LineReader lines(program->socket(), 100);
            std::string const heard(lines.next(5s).value_or(""));
            process = std::stoi(heard);
            EXPECT_EQ(heard, std::to_string(process) + " hello");
            EXPECT_NE(getpgid(process), getpgrp()) << "signals of the terminal reach it";
        }
        EXPECT_EQ(kill(process, 0), -1);
        EXPECT_LT(std::chrono::steady_clock::now() - begun, 5s);
    }
}
