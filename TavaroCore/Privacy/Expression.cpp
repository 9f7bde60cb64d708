#include <TavaroCore/Privacy/Private/Expression.h>

#include <limits>

#include <unicode/regex.h>
#include <unicode/utext.h>

namespace tavaro {

namespace {

constexpr std::int32_t timeLimit = 150;      // steps of the matcher in a text, each less than a millisecond
constexpr std::int32_t stackLimit = 1 << 20; // bytes

/// A UTF-8 text as the matcher reads it; positions are bytes.
class Text {
public:
    explicit Text(std::string_view utf8) {
        UErrorCode code = U_ZERO_ERROR;
        utext_openUTF8(&text_, utf8.data(), static_cast<std::int64_t>(utf8.size()), &code);
    }
    ~Text() { utext_close(&text_); }
    Text(Text const&) = delete;
    Text& operator=(Text const&) = delete;
    UText* get() { return &text_; }

private:
    UText text_ = UTEXT_INITIALIZER;
};

}

struct Expression::State {
    explicit State(std::string_view pattern)
        : matcher(icu::UnicodeString::fromUTF8({pattern.data(), static_cast<std::int32_t>(pattern.size())}), 0, code) {
        if (U_FAILURE(code)) return;
        matcher.setTimeLimit(timeLimit, code);
        matcher.setStackLimit(stackLimit, code);
        matcher.setMatchCallback(countStep, this, code);
    }

    static UBool U_CALLCONV countStep(void const* self, std::int32_t) {
        return --static_cast<State*>(const_cast<void*>(self))->stepsLeft > 0;
    }

    UErrorCode code = U_ZERO_ERROR;
    int stepsLeft = std::numeric_limits<int>::max();
    icu::RegexMatcher matcher;
};

Expression::Expression(std::string_view pattern) : state_(std::make_unique<State>(pattern)) {}

Expression::~Expression() = default;

bool Expression::isValid() const { return U_SUCCESS(state_->code); }

void Expression::allow(int steps) { state_->stepsLeft = steps; }

bool Expression::forEachMatch(std::string_view text, int group, std::function<void(Match const&)> const& visit) {
    Text utf8(text);
    auto& matcher = state_->matcher;
    matcher.reset(utf8.get());
    UErrorCode code = U_ZERO_ERROR;
    while (matcher.find(code) && U_SUCCESS(code)) {
        auto const start = matcher.start64(group, code), end = matcher.end64(group, code);
        if (U_FAILURE(code) || start < 0 || end <= start) continue;
        visit({static_cast<std::size_t>(start), static_cast<std::size_t>(end - start),
               static_cast<std::size_t>(matcher.start64(code))});
    }
    return U_SUCCESS(code);
}

}
