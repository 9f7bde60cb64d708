#pragma once

#include <TavaroCore/Records/JSONText.h>

#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// A message that came in, as far as the server looks into it. What it does not look into is passed on as text or left
/// out, so that a line costs little more than its own length, whatever it holds.
struct IncomingMessage {
    std::optional<JSONValue> id;
    std::string method;      // empty where there is none, or it is no text
    std::string_view params; // the object's text, in the line; empty where there is none

    /// None where the line is no JSON object.
    static std::optional<IncomingMessage> of(std::string_view line);
    /// The id of a message of which only the beginning is there; none where it is not in it.
    static std::optional<JSONValue> idIn(std::string_view beginning);
};

/// Of a call of a tool.
struct CallParameters {
    std::string name;
    JSONText arguments = JSONValue::Object{};
    std::optional<JSONValue> progressToken;

    /// Throws `JSONError`.
    static CallParameters of(IncomingMessage const& message);
};

/// The call that a client cancels; none where it names none. Throws `JSONError`.
std::optional<JSONValue> cancelledRequest(IncomingMessage const& message);

/// The name that a client gives itself; empty where it gives none. Throws `JSONError`.
std::string nameOfClient(IncomingMessage const& message);

}
