#pragma once

#include <TavaroCore/Records/JSONText.h>

#include <string>
#include <string_view>

/// The messages that go out, each as the text of one line without its newline: keys sorted, slashes as they are.
namespace tavaro::jsonRPC {

enum class ErrorCode { parseError = -32700, invalidRequest = -32600, invalidParams = -32602, methodNotFound = -32601 };

std::string result(JSONText result, JSONValue const& id);
std::string error(ErrorCode code, std::string_view message, JSONValue const& id);

struct Progress {
    JSONValue token; // as the client gave it
    double fraction = 0;
    std::string message;
};
std::string progress(Progress const& progress);

}
