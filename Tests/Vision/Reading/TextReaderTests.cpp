#include <TavaroVision/Reading/Private/TextReader.h>

#include "../Drawing/DrawnScreen.h"

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroVision/Errors/VisionError.h>
#include <TavaroVision/Reading/Private/TextLines.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

/// How many letters must be changed, added or left out to make one text of the other (Levenshtein, 1966).
std::size_t editsBetween(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        auto diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            auto const changed = diagonal + (a[i] != b[j]);
            diagonal = std::exchange(row[j + 1], std::min({row[j + 1] + 1, row[j] + 1, changed}));
        }
    }
    return row.back();
}

std::string textOf(ReadLine const& line) {
    std::string text;
    for (auto const& word : line.words) text += (text.empty() ? "" : " ") + word.text;
    return text;
}

class Random {
public:
    std::string letters(std::size_t count, std::string_view of) {
        std::string text;
        while (text.size() < count) text += of[random_() % of.size()];
        return text;
    }
    std::string key(std::size_t count) {
        return letters(count, "ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz23456789");
    }

private:
    std::mt19937 random_{5};
};

/// Lines with a secret each, and ordinary ones between them.
std::vector<std::string> secretLines(Random& random) {
    return {"export GITHUB_TOKEN=ghp_" + random.key(36), "mail: jonas.weber@example.org",
            "OPENAI_API_KEY=sk-proj-" + random.key(40),  "password: correct-Horse-7battery",
            "Authorization: Bearer " + random.key(32),   "card 4111 1111 1111 1111",
            "aws_secret_access_key = " + random.key(40), "call +49 170 5550123"};
}

constexpr std::array<std::string_view, 4> ordinary{"for (auto const& line : lines) total += line.width();",
                                                   "The quick brown fox jumps over the lazy dog.",
                                                   "-rw-r--r-- 1 root root 8192 build.ninja", "Save  Cancel  Help"};

struct Read {
    std::vector<std::string> drawn;
    std::vector<std::string> read;

    double errorRate() const {
        std::size_t wrong = 0, all = 0;
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            wrong += editsBetween(drawn[i], i < read.size() ? read[i] : "");
            all += drawn[i].size();
        }
        return double(wrong) / double(all);
    }
};

std::vector<LineImage> imagesOf(DrawnScreen const& screen) {
    auto const pixels = screen.gray();
    GrayView const view{pixels.data(), screen.width(), screen.height(), screen.width()};
    std::vector<LineImage> images;
    for (auto const& line : textLines(view, {0, 0, view.width, view.height})) images.push_back(lineImage(view, line));
    return images;
}

Read drawnAndRead(std::vector<std::string> texts, TextFace const& face, bool isDark, TextReader& reader) {
    DrawnScreen screen(1280, 800);
    screen.fill({0, 0, 1280, 800}, isDark ? Ink{30, 30, 30} : Ink{255, 255, 255});
    int top = 12;
    for (auto const& text : texts) {
        screen.write(text, 40, top, face, isDark ? Ink{212, 212, 212} : Ink{36, 36, 36});
        top += screen.lineHeight(face) + 4;
    }
    Read result{std::move(texts), {}};
    for (auto const& line : reader.read(imagesOf(screen), {})) result.read.push_back(textOf(line));
    return result;
}

LineImage plainLine(std::uint8_t shade) {
    return {.width = 80,
            .height = 36,
            .pixels = std::vector<std::uint8_t>(80 * 36, shade),
            .letterHeight = 24,
            .line = {100, 200, 70, 16},
            .area = {95, 197, 80, 22}};
}

/// With a blot, and a first pixel by which a fake reader knows it.
LineImage someLine(std::uint8_t mark = 255) {
    auto line = plainLine(255);
    for (std::size_t y = 8; y < 28; ++y)
        std::fill_n(line.pixels.begin() + static_cast<std::ptrdiff_t>(80 * y + 20), 30, 0);
    line.pixels[0] = mark;
    return line;
}

/// A program of the shell's in the reader's place.
class FakeReader {
public:
    FakeReader() { fs::create_directory(folder_); }
    ~FakeReader() { fs::remove_all(folder_); }

    TextReader::Options with(std::string const& text) const {
        auto const file = folder_ / "reader";
        std::ofstream(file) << "#!/bin/bash\n" << text;
        fs::permissions(file, fs::perms::owner_all);
        return {.program = file, .workers = 2, .start = milliseconds(2000), .line = milliseconds(400)};
    }
    fs::path operator/(char const* name) const { return folder_ / name; }

private:
    fs::path const folder_ = fs::temp_directory_path() / ("tavaro-fake-reader-" + std::to_string(::getpid()));
};

constexpr auto sayHello = R"(echo '{"letters":[{"text":"o","x":-9,"width":99999,"confidence":7,"beginsWord":true}]}')"
                          "\n";

std::vector<pid_t> readersNow() {
    std::vector<pid_t> found;
    for (auto const& task : fs::directory_iterator("/proc/self/task")) {
        std::ifstream children(task.path() / "children");
        for (pid_t child = 0; children >> child;) {
            std::string name;
            std::ifstream(fs::path("/proc") / std::to_string(child) / "comm") >> name;
            if (name == "tavaro-reader") found.push_back(child);
        }
    }
    return found;
}

VisionError::Kind failureOf(TextReader& reader, std::span<LineImage const> lines, std::string& sentence) {
    try {
        reader.read(lines, {});
    } catch (VisionError const& error) {
        sentence = error.what();
        return error.kind;
    }
    ADD_FAILURE() << "no failure";
    return VisionError::Kind::failed;
}

}

// Some seconds: 72 lines are read.
TEST(TextReader, secretsOfDarkAndLightPagesAreReadSoThatTheyAreFound) {
    struct Look {
        TextFace face;
        bool isDark;
    };
    TextReader reader;
    SensitiveTextClassifier classifier{RedactionSettings()};
    Random random;
    int found = 0, planted = 0;
    std::size_t wrong = 0, letters = 0;
    for (auto const& look :
         {Look{{"JetBrains Mono", 12}, true}, Look{{"JetBrains Mono", 14}, false}, Look{{"Inter", 24}, true}}) {
        auto texts = secretLines(random);
        auto const secrets = texts.size();
        texts.insert(texts.end(), ordinary.begin(), ordinary.end());
        auto const page = drawnAndRead(texts, look.face, look.isDark, reader);
        ASSERT_EQ(page.read.size(), page.drawn.size());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            bool const isFound = !classifier.matches(page.read[i]).empty();
            EXPECT_EQ(isFound, i < secrets) << page.drawn[i] << "\n" << page.read[i];
            found += isFound && i < secrets;
            wrong += editsBetween(page.drawn[i], page.read[i]);
            letters += page.drawn[i].size();
        }
        planted += static_cast<int>(secrets);
    }
    EXPECT_EQ(planted, 24);
    EXPECT_EQ(found, 24);
    EXPECT_LE(double(wrong) / double(letters), 0.04);
    EXPECT_EQ(reader.leftOut(), 0U);
}

TEST(TextReader, wordsAreWhereTheirInkIs) {
    TextReader reader;
    TextFace const face{"JetBrains Mono", 16};
    DrawnScreen screen(800, 120);
    screen.fill({0, 0, 800, 120}, {255, 255, 255});
    std::string const text = "name  internal.db:5432  x";
    screen.write(text, 60, 40, face, {0, 0, 0});
    auto const& letters = screen.letters(text, face);
    auto const lines = reader.read(imagesOf(screen), {});
    ASSERT_EQ(lines.size(), 1U);
    auto const& words = lines[0].words;
    ASSERT_GE(words.size(), 2U);
    EXPECT_EQ(words[0].text, "name");
    EXPECT_EQ(words[1].text, "internal.db:5432");
    EXPECT_NEAR(words[0].box.x, 60 + letters[0].box.x, 3);
    EXPECT_NEAR(words[0].box.right(), 60 + letters[3].box.right(), 3);
    EXPECT_NEAR(words[1].box.x, 60 + letters[6].box.x, 3);
    EXPECT_NEAR(words[1].box.right(), 60 + letters[21].box.right(), 3);
    EXPECT_GT(words[0].confidence, 0.5F);
}

TEST(TextReader, aKilledWorkerCostsNothing) {
    TextReader reader({.workers = 2});
    Random random;
    std::vector<std::string> texts;
    for (int i = 0; i < 20; ++i) texts.push_back("line of " + random.key(30));
    auto const before = drawnAndRead(texts, {"Inter", 14}, false, reader);
    ASSERT_FALSE(readersNow().empty());
    std::jthread const killer([](std::stop_token const& stop) {
        for (int killed = 0; killed < 2 && !stop.stop_requested();) {
            std::this_thread::sleep_for(milliseconds(60));
            for (auto const process : readersNow()) killed += ::kill(process, SIGKILL) == 0;
        }
    });
    EXPECT_EQ(drawnAndRead(texts, {"Inter", 14}, false, reader).read, before.read);
    EXPECT_EQ(reader.leftOut(), 0U);
}

TEST(TextReader, aLineThatBreaksEveryWorkerIsLeftOut) {
    FakeReader const fake;
    // Dies over pictures whose first pixel is black.
    TextReader reader(fake.with(R"(echo '{}'
while head -c 8 >/dev/null; do
  first=$(head -c 2880 | od -An -tu1 -N1 | tr -d ' ')
  [ -z "$first" ] && exit
  [ "$first" = 0 ] && kill -SEGV $$
  )" + std::string(sayHello) + "done"));
    std::vector<LineImage> const lines{someLine(), someLine(0), someLine()};
    auto const read = reader.read(lines, {});
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(textOf(read[0]), "o");
    EXPECT_EQ(textOf(read[1]), "");
    EXPECT_EQ(textOf(read[2]), "o");
    EXPECT_EQ(reader.leftOut(), 1U);
    ASSERT_FALSE(read[0].words.empty());
    auto const& box = read[0].words[0].box;
    EXPECT_GE(box.x, 100) << "inside of the line, whatever the worker says";
    EXPECT_LE(box.right(), 170);
    EXPECT_EQ(read[0].words[0].confidence, 1);
}

TEST(TextReader, hangingAndTalkingNonsenseEndWithASentence) {
    FakeReader const fake;
    std::string sentence;
    std::vector<LineImage> const lines(6, someLine());
    for (auto const& text :
         {"echo '{}'; sleep 60", "echo '{}'; head -c 8 >/dev/null; echo 'letters: none'; sleep 60"}) {
        TextReader reader(fake.with(text));
        EXPECT_EQ(failureOf(reader, lines, sentence), VisionError::Kind::broken);
        EXPECT_TRUE(sentence.starts_with("Text on the screen cannot be read: the text reader ")) << sentence;
    }
    TextReader silent(fake.with("exit 0"));
    EXPECT_EQ(failureOf(silent, lines, sentence), VisionError::Kind::broken);
}

TEST(TextReader, whatIsMissingIsNamed) {
    FakeReader const fake;
    std::string sentence;
    std::vector<LineImage> const lines(2, someLine());
    TextReader nowhere({.program = "/no/such/program", .workers = 2});
    EXPECT_EQ(failureOf(nowhere, lines, sentence), VisionError::Kind::noReader);
    EXPECT_EQ(sentence, "Text on the screen cannot be read: “/no/such/program” does not start.");
    // The real one, without its language.
    ::setenv("TESSDATA_PREFIX", "/nowhere", 1);
    TextReader speechless;
    EXPECT_EQ(failureOf(speechless, lines, sentence), VisionError::Kind::noReader);
    ::unsetenv("TESSDATA_PREFIX");
    EXPECT_EQ(sentence, "Text on the screen cannot be read: the text engine has no language “eng”. Install the package "
                        "tesseract-ocr-eng.");
    EXPECT_TRUE(TextReader(fake.with("exit")).read({}, {}).empty()) << "nothing to read needs nobody";
}

TEST(TextReader, aStopIsHeardAndLeavesNoWorkerBehind) {
    FakeReader const fake;
    auto options = fake.with("echo '{}'; sleep 60");
    options.line = milliseconds(30'000);
    TextReader reader(options);
    std::stop_source stop;
    std::jthread const canceller([&] {
        std::this_thread::sleep_for(milliseconds(200));
        stop.request_stop();
    });
    auto const began = std::chrono::steady_clock::now();
    std::vector<LineImage> const lines(4, someLine());
    EXPECT_THROW(reader.read(lines, stop.get_token()), VisionError);
    EXPECT_LT(std::chrono::steady_clock::now() - began, milliseconds(1500));
}

TEST(TextReader, picturesThatAreNoLinesHaveNoWords) {
    TextReader reader({.workers = 1});
    std::mt19937 random(3);
    auto noise = plainLine(0);
    for (auto& pixel : noise.pixels) pixel = static_cast<std::uint8_t>(random());
    auto tiny = plainLine(0);
    tiny.width = tiny.height = 1;
    tiny.pixels.resize(1);
    auto damaged = someLine();
    damaged.width = 5000;
    std::vector<LineImage> const lines{plainLine(255), plainLine(0), noise, tiny, damaged, LineImage()};
    auto const read = reader.read(lines, {});
    ASSERT_EQ(read.size(), lines.size());
    for (std::size_t const i : {0, 1, 4, 5}) EXPECT_EQ(textOf(read[i]), "") << i;
    EXPECT_EQ(reader.leftOut(), 0U);
}

}
