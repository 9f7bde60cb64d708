#include <TavaroCore/Records/Date.h>

#include <charconv>
#include <chrono>

#include <fmt/format.h>

namespace tavaro {

namespace {

using namespace std::chrono;

/// Takes exactly `digits` decimal digits off the front of the text.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
    if (text.size() < digits) return std::nullopt;
    int value = 0;
    for (char const c : text.substr(0, digits)) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    text.remove_prefix(digits);
    return value;
}

bool take(std::string_view& text, char expected) {
    if (text.empty() || text.front() != expected) return false;
    text.remove_prefix(1);
    return true;
}

std::optional<sys_days> takeDay(std::string_view& text) {
    auto const y = takeNumber(text, 4);
    if (!y || !take(text, '-')) return std::nullopt;
    auto const m = takeNumber(text, 2);
    if (!m || !take(text, '-')) return std::nullopt;
    auto const d = takeNumber(text, 2);
    if (!d) return std::nullopt;
    year_month_day const date{year{*y}, month{static_cast<unsigned>(*m)}, day{static_cast<unsigned>(*d)}};
    if (!date.ok()) return std::nullopt;
    return sys_days{date};
}

std::optional<std::chrono::milliseconds> takeFraction(std::string_view& text) {
    if (!take(text, '.')) return std::chrono::milliseconds{0};
    std::size_t digits = 0;
    int value = 0;
    for (; digits < text.size() && text[digits] >= '0' && text[digits] <= '9'; ++digits) {
        if (digits < 3) value = value * 10 + (text[digits] - '0');
    }
    if (digits == 0) return std::nullopt;
    for (std::size_t i = digits; i < 3; ++i) value *= 10;
    text.remove_prefix(digits);
    return std::chrono::milliseconds{value};
}

std::optional<std::chrono::milliseconds> takeTimeOfDay(std::string_view& text) {
    auto const h = takeNumber(text, 2);
    if (!h || *h > 24 || !take(text, ':')) return std::nullopt;
    auto const m = takeNumber(text, 2);
    if (!m || *m > 59 || !take(text, ':')) return std::nullopt;
    auto const s = takeNumber(text, 2);
    if (!s || *s > 60) return std::nullopt;
    auto const fraction = takeFraction(text);
    if (!fraction) return std::nullopt;
    return hours{*h} + minutes{*m} + seconds{*s} + *fraction;
}

/// "Z", "+02:00" or "-0530"; the minutes that local time is ahead of UTC.
std::optional<minutes> takeOffset(std::string_view& text) {
    if (take(text, 'Z') || take(text, 'z')) return minutes{0};
    bool const behind = !text.empty() && text.front() == '-';
    if (!take(text, '+') && !take(text, '-')) return std::nullopt;
    auto const h = takeNumber(text, 2);
    take(text, ':');
    auto const m = takeNumber(text, 2);
    if (!h || !m || *h > 23 || *m > 59) return std::nullopt;
    auto const ahead = hours{*h} + minutes{*m};
    return behind ? -ahead : ahead;
}

}

Date Date::now() { return {duration_cast<std::chrono::milliseconds>(system_clock::now().time_since_epoch()).count()}; }

std::optional<Date> Date::parse(std::string_view text) {
    auto const day = takeDay(text);
    if (!day || !(take(text, 'T') || take(text, 't'))) return std::nullopt;
    auto const time = takeTimeOfDay(text);
    if (!time) return std::nullopt;
    auto const offset = takeOffset(text);
    if (!offset || !text.empty()) return std::nullopt;
    auto const moment = sys_time<std::chrono::milliseconds>{*day} + *time - *offset;
    return Date{moment.time_since_epoch().count()};
}

std::string Date::text() const {
    sys_time<std::chrono::milliseconds> const moment{std::chrono::milliseconds{milliseconds}};
    auto const day = floor<days>(moment);
    year_month_day const date{day};
    hh_mm_ss const time{moment - day};
    auto result = fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", static_cast<int>(date.year()),
                              static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                              time.hours().count(), time.minutes().count(), time.seconds().count());
    if (auto const fraction = time.subseconds().count()) result += fmt::format(".{:03}", fraction);
    return result + "Z";
}

}
