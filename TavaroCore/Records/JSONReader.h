#pragma once

#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tavaro {

/// Walks one JSON text once, front to back, without building a tree. The reader always stands on one value; `object`
/// and `array` step it through the values inside, and a value that a visitor does not read is skipped.
/// Every function throws `JSONError` when the text is malformed or the value has another type.
class JSONReader {
public:
    explicit JSONReader(std::string_view text);
    ~JSONReader();
    JSONReader(JSONReader const&) = delete;
    JSONReader& operator=(JSONReader const&) = delete;

    enum class Type { object, array, string, number, boolean, null };
    Type type();

    /// Calls `visit(key)` for each member; the key stays good until `visit` returns.
    void object(FunctionRef<void(std::string_view)> visit);
    /// Calls `visit(index)` for each element.
    void array(FunctionRef<void(std::size_t)> visit);

    /// Good until the reader ends.
    std::string_view string();
    double number();
    /// Accepts a number with a zero fraction ("3.0") as well.
    std::int64_t integer();
    bool boolean();

    /// Fails when anything but white space follows the one value.
    void expectEnd();

private:
    struct State;
    std::unique_ptr<State> state_;
};

}
