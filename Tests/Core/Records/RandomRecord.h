#pragma once

#include <TavaroCore/Records/JSON.h>

#include <cmath>
#include <random>

namespace tavaro {

/// Fills every field of a record, at any depth, with random content, so that a field that is not written, not read or
/// not compared shows.
class RandomRecord {
public:
    explicit RandomRecord(unsigned seed) : random_(seed) {}

    template<class T> void fill(T& value) {
        if constexpr (RecordType<T>) {
            forEachField<T>([&](auto const& field) { fill(value.*field.member); });
        } else if constexpr (CaseType<T>) {
            detail::selectCase(value, random_() % T::caseNames.size());
            std::visit([&](auto& content) { fill(content); }, value.content);
        } else if constexpr (NamedEnum<T>) {
            value = static_cast<T>(random_() % namesOf(T{}).size());
        } else if constexpr (std::is_same_v<T, bool>) {
            value = random_() % 2 == 0;
        } else if constexpr (std::is_floating_point_v<T>) {
            value = static_cast<T>(std::ldexp(static_cast<double>(random_()), static_cast<int>(random_() % 40) - 60));
            if (random_() % 2) value = -value;
        } else if constexpr (std::is_integral_v<T>) {
            value = static_cast<T>(random_());
        } else {
            fillPart(value);
        }
    }

private:
    void fillPart(std::string& value) {
        static constexpr std::string_view pieces[] = {"a", "\"", "\\", "/", "\n", "\x01", "é", "日", "🎬", " "};
        value.clear();
        for (auto n = random_() % 6; n > 0; --n) value += pieces[random_() % std::size(pieces)];
    }
    void fillPart(UUID& value) { value = UUID::random(); }
    void fillPart(Date& value) { value.milliseconds = static_cast<std::int64_t>(random_() % 4'000'000'000'000); }
    void fillPart(Data& value) { value.bytes.assign(random_() % 9, static_cast<std::uint8_t>(random_())); }
    template<class T> void fillPart(std::vector<T>& value) {
        value.resize(random_() % 3);
        for (auto& element : value) fill(element);
    }
    template<class T> void fillPart(std::set<T>& value) {
        T element{};
        fill(element);
        value = {element};
    }
    template<class T> void fillPart(std::map<std::string, T>& value) {
        std::string key;
        fillPart(key);
        fill(value[key]);
    }
    template<class T> void fillPart(std::optional<T>& value) {
        value.reset();
        if (random_() % 3) fill(value.emplace());
    }
    template<class T> void fillPart(CopyOnWrite<T>& value) { fill(value.edit()); }

    std::mt19937_64 random_;
};

}
