#include <TavaroPlatform/Sockets/LineSplitter.h>

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

namespace tavaro {

namespace {

constexpr std::size_t longest = 8;

/// The lines of the bytes, fed in pieces of some length.
std::vector<std::string> linesOf(std::string_view bytes, std::size_t piece) {
    LineSplitter splitter(longest);
    std::vector<std::string> lines;
    for (; !bytes.empty(); bytes.remove_prefix(std::min(piece, bytes.size()))) {
        splitter.feed(bytes.substr(0, piece));
        while (auto const line = splitter.next()) lines.emplace_back(*line);
    }
    return lines;
}

}

TEST(LineSplitter, cutsTheSameLinesHoweverTheyArrive) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        std::string bytes;
        std::vector<std::string> expected;
        for (int i = 0; i < 20; ++i) {
            std::string const line(random() % (2 * longest), static_cast<char>('a' + i));
            bytes += line + "\n";
            expected.push_back(line.size() > longest ? "" : line);
        }
        EXPECT_EQ(linesOf(bytes + "rest", 1 + random() % 40), expected) << bytes;
    }
}

TEST(LineSplitter, knowsALineThatIsTooLongBeforeItEnds) {
    LineSplitter splitter(longest);
    splitter.feed("12345678");
    EXPECT_FALSE(splitter.next());
    EXPECT_FALSE(splitter.isTooLong());
    EXPECT_EQ(splitter.rest(), "12345678");
    splitter.feed("9");
    EXPECT_FALSE(splitter.next());
    EXPECT_TRUE(splitter.isTooLong());
    splitter.feed("\nnext\n");
    EXPECT_EQ(splitter.next(), "");
    EXPECT_EQ(splitter.tooLongBeginning(), "12345678");
    EXPECT_EQ(splitter.next(), "next");
    EXPECT_EQ(splitter.tooLongBeginning(), "");
    EXPECT_FALSE(splitter.isTooLong());
}

}
