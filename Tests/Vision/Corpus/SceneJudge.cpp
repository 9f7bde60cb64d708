#include "SceneJudge.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace tavaro {

namespace {

constexpr double frameAge = 0.07; // seconds for which a cover stays where it was, as in composition
constexpr int legibleLetters = 3;
constexpr double seenLongEnough = 0.25; // seconds

struct SecretLife {
    std::size_t letters = 0;
    int framesWhole = 0;
    bool isFound = false;
    int framesSeen = 0;
    int framesLegible = 0;
    double firstWhole = -1, firstLegible = -1, lastLegible = -1;
    PixelBox place;
};

double uncoveredShare(PixelBox const& letter, std::vector<PixelBox> const& covers) {
    constexpr int steps = 5;
    int uncovered = 0;
    for (int row = 1; row < steps; ++row) { // not the space above the letters
        for (int column = 0; column < steps; ++column) {
            int const x = letter.x + (2 * column + 1) * letter.width / (2 * steps),
                      y = letter.y + (2 * row + 1) * letter.height / (2 * steps);
            uncovered += std::ranges::none_of(covers, [&](PixelBox const& cover) {
                return x >= cover.x && x < cover.right() && y >= cover.y && y < cover.bottom();
            });
        }
    }
    return double(uncovered) / (steps * (steps - 1));
}

class Judging {
public:
    Judging(ScreenScene const& scene, std::vector<ScreenFinding> const& findings)
        : scene_(scene)
        , findings_(findings)
        , screen_(1, 1)
        , lives_(scene.secrets.size())
        , isRight_(findings.size()) {}

    SceneJudgement judgement() {
        for (int n = 0; n < scene_.frames(); ++n) lookAt(n);
        SceneJudgement result;
        result.seconds = scene_.seconds;
        for (std::size_t i = 0; i < lives_.size(); ++i) add(i, result);
        for (std::size_t i = 0; i < findings_.size(); ++i) {
            if (!isRight_[i]) addWrong(findings_[i], result);
        }
        result.secretArea = secretArea_;
        result.coveredArea = coveredArea_;
        return result;
    }

private:
    void lookAt(int number) {
        auto desktop = scene_.frame(number);
        if (!(desktop == desktop_) || number == 0) {
            letters_ = shownLetters(desktop, screen_);
            desktop_ = std::move(desktop);
        }
        auto const start = double(number) / scene_.fps;
        auto covers = coversAt(start);
        auto const later = coversAt(start + 0.9 / scene_.fps);
        markRight(covers);
        std::map<std::size_t, std::vector<ShownLetter const*>> bySecret;
        for (auto const& letter : letters_) bySecret[letter.secret].push_back(&letter);
        for (auto const& [secret, shown] : bySecret) lookAt(lives_[secret], secret, shown, start, covers, later);
        for (auto const& cover : covers) coveredArea_ += areaOf(cover);
        for (auto const& letter : letters_) secretArea_ += areaOf(letter.box) * letter.seen;
    }

    void lookAt(SecretLife& life, std::size_t secret, std::vector<ShownLetter const*> const& shown, double start,
                std::vector<PixelBox> const& covers, std::vector<PixelBox> const& later) {
        std::size_t whole = 0, covered = 0;
        int run = 0, longest = 0;
        ShownLetter const* before = nullptr;
        for (auto const* letter : shown) {
            auto const uncovered = std::max(uncoveredShare(letter->box, covers), uncoveredShare(letter->box, later));
            whole += letter->seen > 0.9;
            covered += letter->seen > 0.9 && uncovered < 0.5;
            bool const isLegible = letter->seen * uncovered >= 0.5;
            bool const goesOn = before && before->line == letter->line && before->place + 1 == letter->place;
            run = isLegible ? (goesOn ? run + 1 : 1) : 0;
            before = letter;
            longest = std::max(longest, run);
        }
        auto const& value = scene_.secrets[secret].value;
        ++life.framesSeen;
        life.place = shown.front()->box;
        if (whole == value.size()) {
            ++life.framesWhole;
            if (life.firstWhole < 0) life.firstWhole = start;
            life.isFound |= double(covered) >= 0.8 * double(whole);
        }
        if (longest < legibleLetters) return;
        ++life.framesLegible;
        if (life.firstLegible < 0) life.firstLegible = start;
        life.lastLegible = start;
    }

    std::vector<PixelBox> coversAt(double seconds) const {
        std::vector<PixelBox> covers;
        for (auto const& finding : findings_)
            covers.push_back(coveredAt(finding, seconds, scene_.width, scene_.height));
        return covers;
    }

    void markRight(std::vector<PixelBox> const& covers) {
        for (std::size_t i = 0; i < covers.size(); ++i) {
            if (isRight_[i] || covers[i].isEmpty()) continue;
            isRight_[i] = std::ranges::any_of(letters_, [&](ShownLetter const& letter) {
                return areaOf(overlapOf(letter.box, covers[i])) > 0.5 * areaOf(letter.box);
            });
        }
    }

    std::string described(std::size_t secret) const {
        auto const& life = lives_[secret];
        return scene_.happens + ", " + scene_.look + ": " + scene_.secrets[secret].format + " [" +
               scene_.secrets[secret].value + "] at " + std::to_string(life.place.x) + "," +
               std::to_string(life.place.y);
    }

    void add(std::size_t secret, SceneJudgement& result) const {
        auto const& life = lives_[secret];
        if (life.framesWhole < seenLongEnough * scene_.fps) return;
        ++result.secrets;
        result.found += life.isFound;
        if (!life.isFound) {
            result.doubtfulSecrets.push_back(secret);
            result.doubtful.push_back(life.firstWhole + 0.2);
            result.missed.push_back(described(secret) + ", whole from " + std::to_string(life.firstWhole) + " s");
            return;
        }
        result.foundSecrets.push_back(secret);
        result.frames += life.framesSeen;
        result.legibleFrames += life.framesLegible;
        if (life.framesLegible == 0) return;
        result.doubtful.push_back((life.firstLegible + life.lastLegible) / 2);
        result.doubtfulSecrets.push_back(secret);
        result.legible.push_back(described(secret) + ", in " + std::to_string(life.framesLegible) + " frames of " +
                                 std::to_string(life.framesSeen) + ", from " + std::to_string(life.firstLegible) +
                                 " to " + std::to_string(life.lastLegible) + " s");
    }

    void addWrong(ScreenFinding const& finding, SceneJudgement& result) const {
        auto const box = coveredAt(finding, finding.start, scene_.width, scene_.height);
        ++result.falseCovers;
        result.wrong.push_back(scene_.happens + ", " + scene_.look + ": " + std::string(nameOf(finding.kind)) + " " +
                               finding.masked + " from " + std::to_string(finding.start) + " to " +
                               std::to_string(finding.end) + " s, " + std::to_string(box.width) + " x " +
                               std::to_string(box.height) + " at " + std::to_string(box.x) + "," +
                               std::to_string(box.y));
    }

    ScreenScene const& scene_;
    std::vector<ScreenFinding> const& findings_;
    DrawnScreen screen_;
    DesktopPicture desktop_;
    std::vector<ShownLetter> letters_;
    std::vector<SecretLife> lives_;
    std::vector<bool> isRight_;
    double secretArea_ = 0;
    double coveredArea_ = 0;
};

void add(std::vector<std::string>& list, std::vector<std::string> const& more) {
    list.insert(list.end(), more.begin(), more.end());
}

}

SceneJudgement& SceneJudgement::operator+=(SceneJudgement const& other) {
    secrets += other.secrets;
    found += other.found;
    frames += other.frames;
    legibleFrames += other.legibleFrames;
    falseCovers += other.falseCovers;
    seconds += other.seconds;
    secretArea += other.secretArea;
    coveredArea += other.coveredArea;
    add(missed, other.missed);
    add(legible, other.legible);
    add(wrong, other.wrong);
    return *this;
}

SceneJudgement judge(ScreenScene const& scene, std::vector<ScreenFinding> const& findings) {
    return Judging(scene, findings).judgement();
}

RedactionTrack trackOf(ScreenFinding const& finding) {
    return {.kind = finding.kind,
            .label = finding.label,
            .textHash = finding.textHash,
            .start = finding.start,
            .end = finding.end,
            .keyframes = finding.keyframes,
            .isAutomatic = true};
}

PixelBox coveredAt(ScreenFinding const& finding, double seconds, int width, int height) {
    if (seconds < finding.start - frameAge || seconds > finding.end + frameAge) return {};
    auto const track = trackOf(finding);
    auto area = track.areaAt(seconds).unionWith(track.areaAt(seconds - frameAge));
    for (auto const& keyframe : track.keyframes) {
        if (keyframe.t > seconds - frameAge && keyframe.t < seconds) area = area.unionWith(keyframe.rect);
    }
    int const left = static_cast<int>(std::lround(area.x * width)),
              top = static_cast<int>(std::lround(area.y * height));
    return {left, top, static_cast<int>(std::lround(area.maxX() * width)) - left,
            static_cast<int>(std::lround(area.maxY() * height)) - top};
}

}
