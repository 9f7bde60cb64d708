#include <TavaroMCP/Client/ToolScript.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONReader.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <set>
#include <utility>

namespace tavaro {

namespace {

using Names = std::set<std::string, std::less<>>;

[[noreturn]] void fail(std::string_view path, std::string_view problem) {
    throw ScriptError(fmt::format("{}: {}.", path, problem));
}

std::string inside(std::string_view path, std::string_view key) { return fmt::format("{}.{}", path, excerpt(key)); }

std::string inside(std::string_view path, std::size_t index) { return fmt::format("{}[{}]", path, index); }

/// What a text of the arguments refers to: a result's name, then members.
using Reference = std::vector<std::string>;

std::optional<Reference> referenceIn(std::string_view text) {
    if (!text.starts_with("${") || !text.ends_with('}')) return std::nullopt;
    text.remove_prefix(2);
    text.remove_suffix(1);
    Reference parts;
    for (auto end = text.find('.'); end != text.npos; end = text.find('.')) {
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    parts.emplace_back(text);
    return parts;
}

bool isEscapedReference(std::string_view text) { return text.starts_with("$${") && text.ends_with('}'); }

JSONValue const* memberOf(JSONValue const& value, std::string_view name) {
    auto const* const elements = value.as<JSONValue::Array>();
    if (!elements) return value.find(name);
    std::size_t index = 0;
    auto const [end, problem] = std::from_chars(name.data(), name.data() + name.size(), index);
    bool const isIndex = problem == std::errc() && end == name.data() + name.size() && index < elements->size();
    return isIndex ? &(*elements)[index] : nullptr;
}

/// The value with `text(path, text)` in place of each text in it.
template<class Text> JSONValue withTexts(JSONValue const& value, std::string const& path, Text const& text) {
    if (auto const* const own = value.as<std::string>()) return text(path, *own);
    if (auto const* const elements = value.as<JSONValue::Array>()) {
        JSONValue::Array result;
        for (std::size_t i = 0; i < elements->size(); ++i)
            result.push_back(withTexts((*elements)[i], inside(path, i), text));
        return result;
    }
    auto const* const members = value.as<JSONValue::Object>();
    if (!members) return value;
    JSONValue::Object result;
    for (auto const& [key, member] : *members) result.emplace(key, withTexts(member, inside(path, key), text));
    return result;
}

JSONValue meaning(std::string const& path, std::string const& text, ToolScript::Results const& results) {
    if (isEscapedReference(text)) return text.substr(1);
    auto const reference = referenceIn(text);
    if (!reference) return text;
    auto const* value = &results.at(reference->front());
    for (std::size_t i = 1; i < reference->size(); ++i) {
        value = memberOf(*value, (*reference)[i]);
        if (!value) fail(path, fmt::format("the result has no member “{}” for “{}”", (*reference)[i], excerpt(text)));
    }
    return *value;
}

/// A step as it is read: each member is taken out, so that what is left over is nobody's.
class StepReader {
public:
    StepReader(JSONValue const& value, std::string path, Names& known) : path_(std::move(path)), known_(known) {
        auto const* const members = value.as<JSONValue::Object>();
        if (!members) fail(path_, "a step is an object");
        members_ = *members;
    }

    ScriptStep read() {
        members_.erase("note");
        ScriptStep step{.say = text("say")};
        if (members_.contains("wait") == members_.contains("tool"))
            fail(path_, "a step has either a “tool” or a “wait”");
        members_.contains("tool") ? readCall(step) : readPause(step);
        if (!members_.empty()) fail(inside(path_, members_.begin()->first), "no step has a member of that name");
        return step;
    }

private:
    std::optional<JSONValue> take(char const* name) {
        auto const member = members_.extract(name);
        return member ? std::optional(std::move(member.mapped())) : std::nullopt;
    }

    std::string text(char const* name) {
        auto const value = take(name);
        if (!value) return "";
        auto const* const text = value->as<std::string>();
        if (!text || text->empty()) fail(inside(path_, name), "expected a text");
        return *text;
    }

    void readPause(ScriptStep& step) {
        auto const value = *take("wait");
        auto const* const whole = value.as<std::int64_t>();
        auto const* const real = value.as<double>();
        step.pause = whole ? static_cast<double>(*whole) : real ? *real : -1;
        if (!(step.pause >= 0 && step.pause <= ToolScript::longestPause))
            fail(inside(path_, "wait"), fmt::format("expected seconds from 0 to {}", ToolScript::longestPause));
    }

    void readCall(ScriptStep& step) {
        auto const name = text("tool");
        step.tool = enumNamed<MCPToolName>(name);
        if (!step.tool) fail(inside(path_, "tool"), fmt::format("there is no tool “{}”", excerpt(name)));
        readArguments(step);
        step.save = text("save");
        step.as = text("as");
        if (step.as.empty()) return;
        if (step.as.find_first_of(".}") != std::string::npos)
            fail(inside(path_, "as"), "a name has neither dots nor braces");
        if (!known_.insert(step.as).second) fail(inside(path_, "as"), "an earlier step has that name");
    }

    void readArguments(ScriptStep& step) {
        auto const value = take("arguments");
        if (!value) return;
        auto const path = inside(path_, "arguments");
        auto const* const members = value->as<JSONValue::Object>();
        if (!members) fail(path, "expected an object");
        step.arguments = *members;
        withTexts(*value, path, [&](std::string const& at, std::string const& text) {
            auto const reference = referenceIn(text);
            if (!reference || known_.contains(reference->front())) return JSONValue();
            fail(at, fmt::format("no earlier step has its result “as” “{}”; a text that only looks so begins with $${{",
                                 excerpt(reference->front())));
        });
    }

    std::string path_;
    Names& known_; // of results so far
    JSONValue::Object members_;
};

JSONValue parsed(std::string_view text) {
    std::optional<JSONReader> reader;
    try {
        reader.emplace(text);
        JSONValue value;
        readJSON(*reader, value);
        reader->expectEnd();
        return value;
    } catch (JSONError const& error) {
        if (!reader) throw ScriptError(fmt::format("The script cannot be read: {}.", error.problem()));
        auto const line = 1 + std::count(text.data(), reader->position(), '\n');
        throw ScriptError(fmt::format("Line {}: {}.", line, error.problem()));
    }
}

JSONValue::Array stepsOf(JSONValue const& script) {
    auto const* const members = script.as<JSONValue::Object>();
    if (!members) throw ScriptError("A script is a JSON object with “steps”.");
    constexpr std::array<std::string_view, 3> names{"steps", "say", "note"};
    for (auto const& [key, value] : *members) {
        if (std::ranges::find(names, key) == names.end()) fail(excerpt(key), "no script has a member of that name");
    }
    auto const* const steps = script.find<JSONValue::Array>("steps");
    if (!steps) fail("steps", "expected a list of steps");
    return *steps;
}

}

ToolScript ToolScript::parse(std::string_view text) {
    ToolScript script;
    Names known;
    auto const steps = stepsOf(parsed(text));
    for (std::size_t i = 0; i < steps.size(); ++i)
        script.steps.push_back(StepReader(steps[i], inside("steps", i), known).read());
    return script;
}

JSONValue::Object ToolScript::arguments(std::size_t step, Results const& results) const {
    auto const value =
        withTexts(steps[step].arguments, "arguments",
                  [&](std::string const& path, std::string const& text) { return meaning(path, text, results); });
    return *value.as<JSONValue::Object>();
}

std::string ToolScript::titleOf(std::size_t step) const {
    return fmt::format("{}/{} {}", step + 1, steps.size(), steps[step].name());
}

bool ToolScript::uses(MCPToolName tool) const {
    return std::ranges::any_of(steps, [&](ScriptStep const& step) { return step.tool == tool; });
}

}
