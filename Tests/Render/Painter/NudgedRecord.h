#pragma once

#include <TavaroCore/Records/JSON.h>

#include <algorithm>
#include <random>

namespace tavaro {

/// Changes one thing somewhere in a record, by a little: a number, a case, an item of a list. Texts stay, so that
/// assets are still found.
class NudgedRecord {
public:
    explicit NudgedRecord(unsigned seed) : random_(seed) {}

    int below(int limit) { return std::uniform_int_distribution(0, limit - 1)(random_); }
    double upTo(double limit) { return std::uniform_real_distribution(0.0, limit)(random_); }

    template<class T> void nudge(T& value) {
        if constexpr (RecordType<T>) {
            if constexpr (fieldCount < T >> 0) nudgeField(value, below(static_cast<int>(fieldCount<T>)));
        } else if constexpr (CaseType<T>) {
            if (below(3) == 0) detail::selectCase(value, static_cast<std::size_t>(below(T::caseNames.size())));
            std::visit([&](auto& content) { nudge(content); }, value.content);
        } else if constexpr (NamedEnum<T>) {
            value = static_cast<T>(below(namesOf(T{}).size()));
        } else if constexpr (std::is_same_v<T, bool>) {
            value = !value;
        } else if constexpr (std::is_floating_point_v<T>) {
            value = static_cast<T>(value * (0.6 + upTo(0.8)) + upTo(0.2) - 0.1);
        } else if constexpr (std::is_integral_v<T>) {
            value += below(3) - 1;
        } else {
            nudgePart(value);
        }
    }

    /// Changes something in the field of that number.
    template<RecordType R> void nudgeField(R& record, int number) {
        int n = 0;
        forEachField<R>([&](auto const& field) {
            if (n++ == number) nudge(record.*field.member);
        });
    }

private:
    void nudgePart(std::string&) {}
    void nudgePart(UUID& value) { value = UUID::random(); }
    void nudgePart(Date& value) { ++value.milliseconds; }
    void nudgePart(Data&) {}
    template<class T> void nudgePart(std::vector<T>& values) {
        if (values.empty()) return;
        auto const at = values.begin() + below(static_cast<int>(values.size()));
        if (below(8) == 0)
            values.erase(at);
        else
            nudge(*at);
    }
    template<class T> void nudgePart(std::set<T>&) {}
    template<class T> void nudgePart(std::map<std::string, T>& values) {
        if (!values.empty()) nudge(values.begin()->second);
    }
    template<class T> void nudgePart(std::optional<T>& value) {
        if (!value)
            nudge(value.emplace());
        else if (below(6) == 0)
            value.reset();
        else
            nudge(*value);
    }
    template<class T> void nudgePart(CopyOnWrite<T>& value) { nudge(value.edit()); }

    std::mt19937 random_;
};

}
