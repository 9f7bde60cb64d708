#include <TavaroCore/Captions/Private/SharedTime.h>

#include <TavaroCore/Captions/SpokenText.h>

#include <algorithm>
#include <numeric>

namespace tavaro {

std::vector<double> startsByLength(TimeRange const& range, std::vector<std::string_view> const& texts) {
    std::vector<double> lengths(texts.size());
    std::transform(texts.begin(), texts.end(), lengths.begin(),
                   [](std::string_view text) { return static_cast<double>(lengthOf(text)); });
    double total = std::accumulate(lengths.begin(), lengths.end(), 0.0);
    if (!(total > 0)) {
        std::fill(lengths.begin(), lengths.end(), 1.0);
        total = static_cast<double>(lengths.size());
    }
    std::vector<double> starts;
    starts.reserve(texts.size() + 1);
    double before = 0;
    for (double const length : lengths) {
        starts.push_back(range.start + range.duration * (before / total));
        before += length;
    }
    starts.push_back(range.end());
    return starts;
}

std::vector<CaptionWord> wordsByLength(TimeRange const& range, std::vector<std::string_view> const& texts) {
    auto const starts = startsByLength(range, texts);
    std::vector<CaptionWord> words(texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) words[i] = {std::string(texts[i]), starts[i], starts[i + 1]};
    return words;
}

}
