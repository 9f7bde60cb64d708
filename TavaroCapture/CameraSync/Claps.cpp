#include <TavaroCapture/CameraSync/Private/Claps.h>

#include <TavaroMedia/Audio/Attacks.h>

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <random>

namespace tavaro {

namespace {

constexpr double longestLag = 0.5;
constexpr double leastApart = 0.25;     // an echo comes sooner
constexpr double leastUsualApart = 0.7; // or a clap's picture may be the next one's
constexpr int leastClaps = 4;
constexpr double leastShare = 0.8; // of the claps that are heard, to be seen
constexpr double widestSpread = 0.03;

/// A sudden movement and its end.
struct Stop {
    double at = 0;
    double weight = 0; // 0…1: how sudden, next to the others
};

template<class Value> Value medianOf(std::vector<Value> values) {
    if (values.empty()) return {};
    auto const middle = values.begin() + std::ssize(values) / 2;
    std::ranges::nth_element(values, middle);
    return *middle;
}

float peakOf(std::span<StereoSample const> samples) {
    float peak = 0;
    for (auto const& [left, right] : samples) peak = std::max({peak, std::abs(left), std::abs(right)});
    return peak;
}

double intervalOf(std::vector<Motion> const& motions) {
    std::vector<double> intervals;
    for (std::size_t i = 1; i < motions.size(); ++i) intervals.push_back(motions[i].at - motions[i - 1].at);
    return medianOf(intervals);
}

/// Where between pictures it was. A movement of several pictures goes on into the one after the largest for a part of
/// the time between two; one of a single picture is anywhere between it and the one before.
double momentOf(std::vector<Motion> const& motions, std::size_t peak) {
    float const before = motions[peak - 1].amount, now = motions[peak].amount, after = motions[peak + 1].amount;
    bool const isAlone = before < 0.25f * now && after < 0.25f * now;
    if (isAlone) return (motions[peak - 1].at + motions[peak].at) / 2;
    double const part = std::min(after / now, 1.0f);
    return motions[peak].at + part * (motions[peak + 1].at - motions[peak].at);
}

std::vector<Stop> stopsIn(std::vector<Motion> const& motions) {
    std::vector<float> amounts;
    for (auto const& motion : motions) amounts.push_back(motion.amount);
    float const usual = medianOf(amounts);
    float const most = amounts.empty() ? 0 : *std::ranges::max_element(amounts);
    float const least = std::max({4 * usual, 0.1f * most, 0.25f});
    std::vector<Stop> result;
    for (std::size_t i = 1; i + 2 < motions.size(); ++i) {
        float const now = motions[i].amount;
        if (now < least || now < motions[i - 1].amount || now <= motions[i + 1].amount) continue;
        double const drop = (now - std::min(motions[i + 1].amount, motions[i + 2].amount)) / most;
        if (drop > 0) result.push_back({momentOf(motions, i), std::sqrt(std::min(drop, 1.0))});
    }
    return result;
}

/// The lag of each clap that is nearest to `lag`, with those that are too far away left out.
struct Votes {
    double lag = 0;
    double weight = 0;
    std::vector<double> lags;
};

Votes votesFor(double lag, double reach, std::vector<double> const& heard, std::vector<Stop> const& stops) {
    Votes votes{lag};
    for (double const clap : heard) {
        Stop const* best = nullptr;
        for (auto const& stop : stops) {
            bool const isNear = std::abs(stop.at - clap - lag) <= reach;
            if (isNear && (!best || stop.weight > best->weight)) best = &stop;
        }
        if (!best) continue;
        votes.weight += best->weight;
        votes.lags.push_back(best->at - clap);
    }
    return votes;
}

/// Hands that have met go apart again, and a light goes off: of lags that fit about as well, a little earlier counts.
Votes bestVotes(double reach, std::vector<double> const& heard, std::vector<Stop> const& stops) {
    constexpr double longestAfter = 0.35;
    std::vector<Votes> all;
    for (double const clap : heard)
        for (auto const& stop : stops)
            if (std::abs(stop.at - clap) <= longestLag) all.push_back(votesFor(stop.at - clap, reach, heard, stops));
    if (all.empty()) return {};
    auto const best = *std::ranges::max_element(all, {}, &Votes::weight);
    std::erase_if(all, [&](Votes const& votes) {
        return votes.weight < 0.8 * best.weight || votes.lag > best.lag || votes.lag < best.lag - longestAfter;
    });
    auto const earliest = std::ranges::min_element(all, {}, &Votes::lag)->lag;
    std::erase_if(all, [&](Votes const& votes) { return votes.lag > earliest + 2 * reach; });
    return *std::ranges::max_element(all, {}, &Votes::weight);
}

/// What sounds at moments of chance would have been given: where things move all the time, any lag fits.
double weightByChance(double reach, std::size_t count, std::vector<Motion> const& motions,
                      std::vector<Stop> const& stops) {
    std::minstd_rand random(1);
    std::uniform_real_distribution<double> moment(motions.front().at, motions.back().at);
    double most = 0;
    for (int i = 0; i < 20; ++i) {
        std::vector<double> heard(count);
        for (double& clap : heard) clap = moment(random);
        most = std::max(most, bestVotes(reach, heard, stops).weight);
    }
    return most;
}

std::optional<std::string> doubtIn(std::vector<double> const& heard) {
    if (std::ssize(heard) < leastClaps)
        return fmt::format("Only {} claps were heard; it takes {} at least.", heard.size(), leastClaps);
    std::vector<double> apart;
    for (std::size_t i = 1; i < heard.size(); ++i) apart.push_back(heard[i] - heard[i - 1]);
    if (medianOf(apart) < leastUsualApart)
        return "The claps come too fast to tell one from the next; once a second is good.";
    return std::nullopt;
}

}

std::vector<double> clapsHeard(std::span<StereoSample const> sound, double start) {
    Attacks attacks(0);
    attacks.feed(sound);
    std::vector<std::int64_t> found;
    for (auto at = attacks.next(0); at != Attacks::none; at = attacks.next(at + 1)) found.push_back(at);
    auto const loudness = [&](std::int64_t at) {
        auto const from = static_cast<std::size_t>(std::max<std::int64_t>(at, 0));
        return peakOf(sound.subspan(from, std::min<std::size_t>(audioRate / 100, sound.size() - from)));
    };
    float loudest = 0;
    for (auto const at : found) loudest = std::max(loudest, loudness(at));
    std::vector<double> result;
    for (auto const at : found) {
        double const moment = start + static_cast<double>(at) / audioRate;
        bool const isEcho = !result.empty() && moment - result.back() < leastApart;
        if (!isEcho && loudness(at) >= 0.25f * loudest) result.push_back(moment);
    }
    return result;
}

ClapMatch matchedClaps(std::vector<double> const& heard, std::vector<Motion> const& motions) {
    ClapMatch match{.heard = static_cast<int>(heard.size()), .doubt = doubtIn(heard)};
    if (match.doubt) return match;
    auto const stops = stopsIn(motions);
    double const reach = 0.8 * intervalOf(motions);
    auto const votes = bestVotes(reach, heard, stops);
    match.seen = static_cast<int>(votes.lags.size());
    if (match.seen < leastClaps || match.seen < leastShare * match.heard) {
        match.doubt = fmt::format("Of {} claps that were heard, only {} can be seen.", match.heard, match.seen);
        return match;
    }
    double const lag = medianOf(votes.lags);
    std::vector<double> distances;
    for (double const each : votes.lags) distances.push_back(std::abs(each - lag));
    match.spread = medianOf(distances);
    if (match.spread > widestSpread || votes.weight < weightByChance(reach, heard.size(), motions, stops) + 0.5)
        match.doubt = "The camera sees so much move that the claps cannot be told from the rest.";
    else
        match.lag = lag;
    return match;
}

}
