#include <Tavaro/Commands/TextFile.h>

#include <TavaroCore/Files/FileError.h>

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

using namespace tavaro;

namespace {

std::string readFromInput(std::string const& text, std::uint64_t most) {
    std::istringstream input(text);
    auto* const before = std::cin.rdbuf(input.rdbuf());
    std::string read;
    try {
        read = commands::readText("-", commands::Dash::isStandardInput, most);
    } catch (FileError const& error) {
        read = error.what();
    }
    std::cin.rdbuf(before);
    std::cin.clear();
    return read;
}

}

TEST(TextFile, standardInputIsReadToItsEndButNoFurtherThanAFileWouldBe) {
    std::string const text(200'000, 'a');
    EXPECT_EQ(readFromInput(text, text.size()), text);
    EXPECT_EQ(readFromInput(text, text.size() - 1),
              "Could not read the standard input: it is larger than 199999 bytes.");
    EXPECT_EQ(readFromInput("", 0), "");
}
