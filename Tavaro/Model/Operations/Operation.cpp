#include <Tavaro/Model/Operations/Operation.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/RecordPatch.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>

namespace tavaro {

namespace {

[[noreturn]] void failArgument(std::string const& sentence) {
    throw OperationError(OperationError::Kind::badArgument, sentence);
}

/// "a, b or c"
template<class Names> std::string choice(Names const& names) {
    std::string text;
    for (std::size_t i = 0; i < names.size(); ++i) {
        text += i == 0 ? "" : i + 1 < names.size() ? ", " : " or ";
        text += names[i];
    }
    return text;
}

/// What a field takes, for who gave it something else.
template<class Value> std::string expectation() {
    if constexpr (detail::IsOptional<Value>::value)
        return expectation<typename Value::value_type>();
    else if constexpr (NamedEnum<Value>)
        return choice(namesOf(Value{}));
    else if constexpr (std::is_same_v<Value, bool>)
        return "true or false";
    else if constexpr (std::is_unsigned_v<Value>)
        return "a whole number of 0 or more";
    else if constexpr (std::is_integral_v<Value>)
        return "a whole number";
    else if constexpr (std::is_arithmetic_v<Value>)
        return "a number";
    else if constexpr (std::is_same_v<Value, std::string>)
        return "a text";
    else
        return "a list of texts";
}

template<class Record, class Value>
void readArgument(Record& record, Field<Record, Value> const& field, JSONValue const& argument) {
    try {
        detail::RecordPatching{ListItems::replacedWhole}.change(record.*field.member, argument);
    } catch (JSONError const&) {
        failArgument(fmt::format("{} must be {}.", field.name, expectation<Value>()));
    }
}

template<class Record> void expectKnown(JSONValue::Object const& arguments) {
    for (auto const& argument : arguments) {
        auto const& key = argument.first;
        bool isKnown = false;
        forEachField<Record>([&](auto const& field) { isKnown = isKnown || field.name == key; });
        if (!isKnown) failArgument(fmt::format("“{}” is no argument of {}.", key, Record::info.name));
    }
}

template<class Record> Record decoded(JSONValue const& arguments) {
    auto const* given = arguments.as<JSONValue::Object>();
    if (!given) failArgument(fmt::format("The arguments of {} must be a JSON object.", Record::info.name));
    expectKnown<Record>(*given);
    Record record;
    forEachParameter<Record>([&](auto const& field, Parameter const& parameter) {
        auto const argument = given->find(field.name);
        bool const isMissing = argument == given->end() || argument->second.isNull();
        if (!isMissing)
            readArgument(record, field, argument->second);
        else if (parameter.presence == Presence::required)
            failArgument(fmt::format("{} is required.", field.name));
    });
    return record;
}

template<class Value> void expectValue(Parameter const& parameter, std::string_view field, Value const& value) {
    std::string problem;
    if constexpr (std::is_arithmetic_v<Value> && !std::is_same_v<Value, bool>)
        problem = valueProblem(parameter, field, static_cast<double>(value));
    else if constexpr (std::is_same_v<Value, std::string>)
        problem = valueProblem(parameter, field, value);
    if (!problem.empty()) failArgument(problem);
}
template<class Value>
void expectValue(Parameter const& parameter, std::string_view field, std::optional<Value> const& value) {
    if (value) expectValue(parameter, field, *value);
}
template<class Value>
void expectValue(Parameter const& parameter, std::string_view field, std::vector<Value> const& values) {
    for (auto const& value : values) expectValue(parameter, field, value);
}

}

OperationInfo const& infoOf(Operation const& operation) {
    return std::visit([](auto const& record) -> OperationInfo const& { return record.info; }, operation);
}

void expectParameters(Operation const& operation) {
    std::visit(
        [](auto const& record) {
            forEachParameter<std::remove_cvref_t<decltype(record)>>([&](auto const& field, Parameter const& parameter) {
                expectValue(parameter, field.name, record.*field.member);
            });
        },
        operation);
}

Operation decodeOperation(std::string_view name, JSONValue const& arguments) {
    std::optional<Operation> operation;
    forEachOperation([&]<class Record>(std::type_identity<Record>) {
        if (Record::info.name == name) operation = decoded<Record>(arguments);
    });
    if (!operation)
        throw OperationError(OperationError::Kind::noSuchOperation,
                             fmt::format("There is no operation “{}”.", excerpt(name)));
    expectParameters(*operation);
    return *operation;
}

}
