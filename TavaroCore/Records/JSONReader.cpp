#include <TavaroCore/Records/JSONReader.h>

#include <TavaroCore/Records/JSONError.h>

#include <cmath>

#include <fmt/format.h>
#include <simdjson.h>

namespace tavaro {

namespace {

namespace ondemand = simdjson::ondemand;

std::string_view nameOf(JSONReader::Type type) {
    constexpr std::string_view names[] = {"an object", "an array", "a string", "a number", "true or false", "null"};
    return names[static_cast<int>(type)];
}

[[noreturn]] void failMalformed(simdjson::error_code code) {
    if (code == simdjson::UTF8_ERROR) throw JSONError(JSONError::Kind::malformed, "the text is not valid UTF-8");
    if (code == simdjson::EMPTY) throw JSONError(JSONError::Kind::malformed, "the text is empty");
    if (code == simdjson::DEPTH_ERROR) throw JSONError(JSONError::Kind::malformed, "the JSON is nested too deeply");
    if (code == simdjson::CAPACITY) throw JSONError(JSONError::Kind::malformed, "the JSON is larger than 4 GB");
    throw JSONError(JSONError::Kind::malformed, "the text is not valid JSON");
}

}

struct JSONReader::State {
    explicit State(std::string_view text) : padded(text) {
        if (auto const code = parser.iterate(padded).get(document)) failMalformed(code);
        if (auto const code = document.get_value().get(current)) {
            if (code == simdjson::SCALAR_DOCUMENT_AS_VALUE) {
                throw JSONError(JSONError::Kind::wrongType, "expected an object, found a single value");
            }
            failMalformed(code);
        }
    }

    simdjson::padded_string padded;
    ondemand::parser parser;
    ondemand::document document;
    ondemand::value current;
};

JSONReader::JSONReader(std::string_view text) : state_(std::make_unique<State>(text)) {}

JSONReader::~JSONReader() = default;

JSONReader::Type JSONReader::type() {
    ondemand::json_type type;
    if (auto const code = state_->current.type().get(type)) failMalformed(code);
    switch (type) {
    case ondemand::json_type::object: return Type::object;
    case ondemand::json_type::array: return Type::array;
    case ondemand::json_type::string: return Type::string;
    case ondemand::json_type::number: return Type::number;
    case ondemand::json_type::boolean: return Type::boolean;
    default: return Type::null;
    }
}

namespace {

/// Unwraps a result; a value of another type becomes a sentence that names both types.
template<class T, class Result> T expect(Result&& result, JSONReader& reader, JSONReader::Type wanted) {
    T value;
    auto const code = std::forward<Result>(result).get(value);
    if (!code) return value;
    if (code == simdjson::INCORRECT_TYPE) {
        auto const found = reader.type();
        if (found != wanted) {
            throw JSONError(JSONError::Kind::wrongType,
                            fmt::format("expected {}, found {}", nameOf(wanted), nameOf(found)));
        }
    }
    failMalformed(code);
}

}

void JSONReader::object(FunctionRef<void(std::string_view)> visit) {
    auto object = expect<ondemand::object>(state_->current.get_object(), *this, Type::object);
    for (auto result : object) {
        ondemand::field field;
        if (auto const code = std::move(result).get(field)) failMalformed(code);
        std::string_view key;
        if (auto const code = field.unescaped_key().get(key)) failMalformed(code);
        state_->current = field.value();
        visit(key);
    }
}

void JSONReader::array(FunctionRef<void(std::size_t)> visit) {
    auto array = expect<ondemand::array>(state_->current.get_array(), *this, Type::array);
    std::size_t index = 0;
    for (auto result : array) {
        if (auto const code = std::move(result).get(state_->current)) failMalformed(code);
        visit(index++);
    }
}

std::string_view JSONReader::string() {
    return expect<std::string_view>(state_->current.get_string(), *this, Type::string);
}

double JSONReader::number() {
    double value;
    auto const code = state_->current.get_double().get(value);
    if (!code) return value;
    if (auto const found = type(); found != Type::number) {
        throw JSONError(JSONError::Kind::wrongType, fmt::format("expected a number, found {}", nameOf(found)));
    }
    throw JSONError(JSONError::Kind::wrongType, "the number cannot be held in 64-bit floating point");
}

std::int64_t JSONReader::integer() {
    std::int64_t value;
    if (!state_->current.get_int64().get(value)) return value;
    double const real = number();
    if (real != std::floor(real)) throw JSONError(JSONError::Kind::wrongType, "expected a whole number");
    if (std::abs(real) >= 0x1p63) throw JSONError(JSONError::Kind::wrongType, "the number does not fit in 64 bits");
    return static_cast<std::int64_t>(real);
}

bool JSONReader::boolean() { return expect<bool>(state_->current.get_bool(), *this, Type::boolean); }

void JSONReader::expectEnd() {
    char const* rest = nullptr;
    if (state_->document.current_location().get(rest)) return; // no token is left
    throw JSONError(JSONError::Kind::malformed, "something follows the end of the JSON");
}

}
