#include <TavaroCapture/CameraSync/Private/Claps.h>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <random>

namespace tavaro {

namespace {

/// What is done before a camera, by moments at which it is heard.
struct Scene {
    enum class Kind { claps, flashes };
    Kind kind = Kind::claps;
    double apart = 1;
    int count = 6;
    double lag = 0;
    double fps = 30;
    double dancing = 0; // movement all the time, next to a clap's
};

class Performance {
public:
    Performance(Scene const& scene, unsigned seed) : scene_(scene), random_(seed) {
        for (int i = 0; i < scene.count; ++i) moments.push_back(1 + i * scene.apart + among(-0.08, 0.08));
    }

    /// Hands fly together in an eighth of a second, rest, and go apart slowly; a light goes on, and off again.
    double movedUntil(double at) const {
        double sum = 0;
        for (double const moment : moments) {
            double const since = at - moment;
            if (scene_.kind == Scene::Kind::flashes) {
                sum += (since >= 0 ? 20 : 0) + (since >= 0.2 ? 20 : 0);
            } else {
                double const closing = std::clamp(1 + since / 0.125, 0.0, 1.0);
                double const opening = std::clamp((since - 0.15) / 0.3, 0.0, 1.0);
                sum += 30 * closing * closing + 12 * opening;
            }
        }
        return sum;
    }
    std::vector<Motion> motions() {
        std::vector<Motion> result;
        double const phase = among(0, 1 / scene_.fps);
        for (int i = 1; i < 9 * scene_.fps; ++i) {
            double const taken = phase + i / scene_.fps;
            double const moved = movedUntil(taken) - movedUntil(taken - 1 / scene_.fps);
            double const dance = scene_.dancing * 12 * std::exp(std::normal_distribution<double>(0, 0.7)(random_));
            result.push_back({taken + scene_.lag, static_cast<float>(moved + dance + among(0.2, 0.4))});
        }
        return result;
    }

    std::vector<double> moments;

private:
    double among(double from, double to) { return std::uniform_real_distribution<double>(from, to)(random_); }

    Scene const scene_;
    std::mt19937 random_;
};

ClapMatch matched(Scene const& scene, unsigned seed) {
    Performance performance(scene, seed);
    auto const motions = performance.motions();
    return matchedClaps(performance.moments, motions);
}

}

TEST(Claps, tellTheLagToAFractionOfAPicture) {
    for (auto const kind : {Scene::Kind::claps, Scene::Kind::flashes}) {
        for (double const lag : {-0.2, 0.0, 0.07, 0.35}) {
            for (double const fps : {15.0, 30.0, 60.0}) {
                double sum = 0;
                int told = 0;
                for (unsigned seed = 0; seed < 20; ++seed) {
                    auto const match = matched({.kind = kind, .lag = lag, .fps = fps}, seed);
                    if (!match.lag) continue;
                    EXPECT_NEAR(*match.lag, lag, 0.75 / fps) << static_cast<int>(kind) << " at " << fps << ", " << seed;
                    sum += *match.lag - lag;
                    ++told;
                }
                EXPECT_GE(told, fps < 30 ? 16 : 19) << static_cast<int>(kind) << " at " << fps;
                EXPECT_NEAR(sum / told, 0, 0.35 / fps) << static_cast<int>(kind) << " at " << fps;
            }
        }
    }
}

TEST(Claps, aLagThatCannotBeToldIsNotMadeUp) {
    for (unsigned seed = 0; seed < 100; ++seed) {
        for (auto const& scene : {Scene{.count = 3}, Scene{.apart = 0.5, .count = 12}, Scene{.dancing = 3}}) {
            auto const match = matched(scene, seed);
            EXPECT_TRUE(!match.lag || std::abs(*match.lag) < 0.04) << seed;
            EXPECT_NE(match.lag.has_value(), match.doubt.has_value());
        }
        std::mt19937 random(seed);
        std::vector<double> elsewhere(6); // somebody else claps
        for (double& moment : elsewhere) moment = std::uniform_real_distribution<double>(0.5, 8)(random);
        std::ranges::sort(elsewhere);
        Performance walking({.dancing = 0.4}, seed);
        EXPECT_FALSE(matchedClaps(elsewhere, walking.motions()).lag) << seed;
    }
    EXPECT_EQ(matched({.count = 3}, 1).doubt, "Only 3 claps were heard; it takes 4 at least.");
    EXPECT_EQ(matched({.apart = 0.5, .count = 12}, 1).doubt,
              "The claps come too fast to tell one from the next; once a second is good.");
    std::vector<Motion> still;
    for (int i = 0; i < 200; ++i) still.push_back({i / 30.0, 0.2f});
    EXPECT_EQ(matchedClaps({1, 2, 3, 4, 5}, still).doubt, "Of 5 claps that were heard, only 0 can be seen.");
    EXPECT_FALSE(matchedClaps({1, 2, 3, 4, 5}, {}).lag);
}

TEST(Claps, areHeardOnceEachAmongEchoesAndNoise) {
    std::mt19937 random(7);
    std::vector<StereoSample> sound(6 * audioRate);
    for (auto& [left, right] : sound) left = right = std::normal_distribution<float>(0, 0.003f)(random);
    std::vector<double> const moments{0.7, 1.9, 2.8, 4.1};
    auto const burst = [&](double at, float loudness) {
        for (int i = 0; i < audioRate / 20; ++i) {
            auto& sample = sound[static_cast<std::size_t>(at * audioRate) + static_cast<std::size_t>(i)];
            sample.left +=
                loudness * std::exp(-0.002f * static_cast<float>(i)) * std::sin(0.3f * static_cast<float>(i));
        }
    };
    for (double const moment : moments) {
        burst(moment, 0.8f);
        burst(moment + 0.12, 0.4f); // off the wall
    }
    burst(3.4, 0.1f); // a key of the keyboard
    EXPECT_THAT(clapsHeard(sound, 100), testing::Pointwise(testing::DoubleNear(0.003), {100.7, 101.9, 102.8, 104.1}));
    EXPECT_TRUE(clapsHeard({}, 0).empty());
}

}
