#pragma once

#include <Tavaro/Model/Operations/OperationInfo.h>

#include <TavaroCore/Editing/RangeEdits.h>
#include <TavaroCore/Records/Fields.h>

#include <array>
#include <string>

/// The operations that change when the film shows what. Times are seconds of the edit, and those past its end by less
/// than a hundredth mean the end. Each `apply` changes the document and says what it did in a line without a full stop.
namespace tavaro::operations {

namespace detail {

inline constexpr Parameter from{.name = "FROM", .help = "where it begins, in seconds", .range = NumberRange{}};
inline constexpr Parameter to{.name = "TO", .help = "where it ends", .range = NumberRange{}};
inline constexpr Parameter at{.name = "TIME", .help = "where, in seconds", .range = NumberRange{}};

}

struct Trim {
    double start = 0;
    double end = 0;

    static constexpr OperationInfo info{.name = "trim", .title = "Trim", .help = "Keeps only that span"};
    static constexpr std::array parameters{detail::from, detail::to};
    static constexpr auto fields = std::tuple{field("start", &Trim::start), field("end", &Trim::end)};
    bool operator==(Trim const&) const = default;
};
static_assert(listsEveryField<Trim>);

struct Cut {
    double start = 0;
    double end = 0;

    static constexpr OperationInfo info{.name = "cut", .title = "Cut", .help = "Takes that span out"};
    static constexpr std::array parameters{detail::from, detail::to};
    static constexpr auto fields = std::tuple{field("start", &Cut::start), field("end", &Cut::end)};
    bool operator==(Cut const&) const = default;
};
static_assert(listsEveryField<Cut>);

struct ChangeSpeed {
    double start = 0;
    double end = 0;
    double rate = 1;

    static constexpr OperationInfo info{
        .name = "speed", .title = "Change Speed", .help = "Plays that span faster, or slower below 1"};
    static constexpr std::array parameters{detail::from, detail::to,
                                           Parameter{.name = "RATE",
                                                     .help = "times as fast, 0.25 to 16",
                                                     .range = NumberRange{slowestRate, fastestRate, "a rate"}}};
    static constexpr auto fields = std::tuple{
        field("start", &ChangeSpeed::start),
        field("end", &ChangeSpeed::end),
        field("rate", &ChangeSpeed::rate),
    };
    bool operator==(ChangeSpeed const&) const = default;
};
static_assert(listsEveryField<ChangeSpeed>);

struct Split {
    double time = 0;

    static constexpr OperationInfo info{
        .name = "split", .title = "Split Clip", .help = "Splits the clip at a time in two"};
    static constexpr std::array parameters{detail::at};
    static constexpr auto fields = std::tuple{field("time", &Split::time)};
    bool operator==(Split const&) const = default;
};
static_assert(listsEveryField<Split>);

struct InsertTime {
    double time = 0;
    double duration = 1;

    static constexpr OperationInfo info{
        .name = "insert", .title = "Insert Time", .help = "Inserts time, in which the frame on show is held"};
    static constexpr std::array parameters{
        detail::at,
        Parameter{.name = "SECONDS", .help = "how long", .range = NumberRange{.least = 0.001, .most = 86400}}};
    static constexpr auto fields =
        std::tuple{field("time", &InsertTime::time), field("duration", &InsertTime::duration)};
    bool operator==(InsertTime const&) const = default;
};
static_assert(listsEveryField<InsertTime>);

std::string apply(DemoProject& project, Trim const& trim);
std::string apply(DemoProject& project, Cut const& cut);
std::string apply(DemoProject& project, ChangeSpeed const& change);
std::string apply(DemoProject& project, Split const& split);
std::string apply(DemoProject& project, InsertTime const& insert);

}
