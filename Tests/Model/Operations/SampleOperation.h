#pragma once

#include "../../Core/Records/RandomRecord.h"

#include <Tavaro/Model/Operations/Operation.h>

#include <algorithm>
#include <random>

namespace tavaro {

/// Operations with random parameters that are in their ranges; times are up to `seconds`.
class SampleOperation {
public:
    SampleOperation(unsigned seed, double seconds) : random_(seed), record_(seed), seconds_(seconds) {}

    template<class Record> Record make() {
        Record record;
        forEachParameter<Record>(
            [&](auto const& field, Parameter const& parameter) { fill(record.*field.member, parameter); });
        if constexpr (requires { record.end; }) {
            if (record.end < record.start) std::swap(record.start, record.end);
        }
        return record;
    }

private:
    template<class Value> void fill(Value& value, Parameter const& parameter) {
        if constexpr (std::is_same_v<Value, JSONValue>)
            value = JSONValue::parse(R"({"name":"Tour","camera":{"size":0.5},"intro":{"text":"Hi"}})");
        else if constexpr (std::is_floating_point_v<Value>)
            value = number(parameter);
        else if constexpr (std::is_integral_v<Value> && !std::is_same_v<Value, bool>)
            value = static_cast<Value>(number(parameter));
        else if constexpr (std::is_same_v<Value, std::string>)
            value = text(parameter);
        else
            record_.fill(value);
    }
    template<class Value> void fill(std::optional<Value>& value, Parameter const& parameter) {
        if (random_() % 2) fill(value.emplace(), parameter);
    }
    template<class Value> void fill(std::vector<Value>& values, Parameter const& parameter) {
        for (auto n = 1 + random_() % 3; n > 0; --n) fill(values.emplace_back(), parameter);
    }
    double number(Parameter const& parameter) {
        auto const range = parameter.range.value_or(NumberRange{});
        return std::uniform_real_distribution(range.least, std::min(range.most, range.least + seconds_))(random_);
    }
    std::string text(Parameter const& parameter) {
        static constexpr char const* texts[] = {"music",
                                                "2.5",
                                                "canvas.width=800",
                                                "name=Tour",
                                                "camera.isEnabled=false",
                                                "Some words to say.",
                                                "all",
                                                "1\n00:00:01,000 --> 00:00:02,000\nHello"};
        for (;;) {
            std::string const text = texts[random_() % std::size(texts)];
            if (!parameter.textProblem || parameter.textProblem(text).empty()) return text;
        }
    }

    std::mt19937 random_;
    RandomRecord record_;
    double seconds_;
};

}
