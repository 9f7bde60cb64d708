#include <TavaroMCP/Client/ToolScript.h>

#include <TavaroCore/Records/JSONError.h>

#include <cstdint>
#include <cstdlib>

using namespace tavaro;

// Any bytes are a script or a sentence; the arguments of its steps are made of whatever earlier results hold, or are
// refused.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    std::string_view const text(reinterpret_cast<char const*>(data), size);
    try {
        auto const script = ToolScript::parse(text);
        ToolScript::Results results;
        for (std::size_t i = 0; i < script.steps.size(); ++i) {
            auto const& step = script.steps[i];
            if (!step.as.empty()) results.emplace(step.as, JSONValue::parse(text));
            if (!step.tool && !step.arguments.empty()) std::abort();
            try {
                static_cast<void>(script.arguments(i, results));
            } catch (ScriptError const&) {
                // a result without that member
            }
        }
    } catch (ScriptError const& error) {
        if (std::string_view(error.what()).empty()) std::abort();
    }
    return 0;
}
