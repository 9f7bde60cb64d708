#include <Tavaro/Model/Operations/PatchOperations.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Private/DocumentValues.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/RecordPatch.h>
#include <TavaroCore/Style/BackgroundPreset.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>

namespace tavaro::operations {

namespace {

/// Fields that say what was recorded, that saving sets, or that have operations of their own.
constexpr std::array<std::string_view, 7> protectedFields{"id",       "version",        "metadata", "modifiedAt",
                                                          "timeline", "assetDurations", "createdAt"};

[[noreturn]] void fail(std::string const& sentence) { throw OperationError(OperationError::Kind::badPatch, sentence); }

[[noreturn]] void fail(std::string const& sentence, std::string const& tools) {
    throw OperationError(OperationError::Kind::badPatch, sentence, tools);
}

void expectChangeable(std::string_view key) {
    bool isField = false;
    forEachField<DemoProject>([&](auto const& field) { isField = isField || field.name == key; });
    if (!isField) fail(fmt::format("\"{}\" is not a project field.", excerpt(key)), "Check get_project for the names.");
    if (std::ranges::find(protectedFields, key) == protectedFields.end()) return;
    auto const refusal = fmt::format("\"{}\" can't be changed.", key);
    if (key == "timeline") fail(refusal, "Use edit_timeline.");
    fail(refusal);
}

BackgroundStyle const& presetNamed(JSONValue const& id) {
    auto const* name = id.as<std::string>();
    if (auto const* preset = name ? BackgroundPreset::withID(*name) : nullptr) return preset->style;
    std::vector<std::string_view> known;
    for (auto const& preset : BackgroundPreset::all()) known.push_back(preset.id);
    fail(fmt::format("background.preset: expected one of {}.", fmt::join(known, ", ")));
}

/// Makes the preset that the patch may name the background, and takes its name out of the patch.
void takePreset(DemoProject& project, JSONValue::Object& patch) {
    auto const background = patch.find("background");
    auto* parts = background == patch.end() ? nullptr : std::get_if<JSONValue::Object>(&background->second.content);
    auto const preset = parts ? parts->find("preset") : JSONValue::Object::iterator{};
    if (!parts || preset == parts->end()) return;
    project.background = presetNamed(preset->second);
    parts->erase(preset);
}

/// Refuses the first value that makes no sense and that the document did not have before.
void expectUsable(DemoProject const& before, DemoProject const& after, JSONValue::Object const& patch) {
    std::set<std::string_view> named;
    for (auto const& [key, value] : patch) named.insert(key);
    auto const problems = valueProblems(after, named);
    if (problems.empty()) return;
    auto const known = valueProblems(before, named);
    for (auto const& problem : problems) {
        if (!known.contains(problem)) fail(problem + ".");
    }
}

/// A finding's cover that somebody changed is left as it is by the next scan.
void keepChangedCovers(DemoProject const& before, DemoProject& project) {
    if (project.redactions == before.redactions) return;
    for (auto& track : project.redactions.edit()) {
        auto const earlier = std::ranges::find(*before.redactions, track.id, &RedactionTrack::id);
        if (!track.isAutomatic || earlier == before.redactions->end()) continue;
        auto unchanged = *earlier;
        unchanged.isEnabled = track.isEnabled; // which is a decision about the text
        unchanged.isAutomatic = true;
        track.isAutomatic = track == unchanged;
    }
}

void merge(DemoProject& project, JSONValue::Object patch, ListItems listItems) {
    for (auto const& [key, value] : patch) expectChangeable(key);
    auto const before = project;
    takePreset(project, patch);
    try {
        patchRecord(project, {patch}, listItems);
    } catch (JSONError const& error) {
        fail(error.what() + std::string("."));
    }
    expectUsable(before, project, patch);
    keepChangedCovers(before, project);
}

/// "Changed background, camera"
std::string difference(DemoProject const& before, DemoProject const& after) {
    std::vector<std::string_view> changed;
    forEachField<DemoProject>([&](auto const& field) {
        if (!(before.*field.member == after.*field.member)) changed.push_back(field.name);
    });
    return changed.empty() ? "The project is that way already" : fmt::format("Changed {}", fmt::join(changed, ", "));
}

/// JSON, or else the text itself.
JSONValue valueOf(std::string const& text) {
    try {
        return JSONValue::parse(text);
    } catch (JSONError const&) {
        return {text};
    }
}

/// "camera.size" and 0.3 as {"camera": {"size": 0.3}}
JSONValue::Object patchOf(std::string_view path, JSONValue value) {
    for (std::size_t parts = 1;; ++parts) {
        if (parts > JSONValue::deepestNesting) fail("The path of a field has fewer dots.");
        auto const dot = path.rfind('.');
        JSONValue::Object object;
        object.emplace(path.substr(dot == path.npos ? 0 : dot + 1), std::move(value));
        if (dot == path.npos) return object;
        value = {std::move(object)};
        path = path.substr(0, dot);
    }
}

/// Adds one object's members to another's, at any depth.
void addTo(JSONValue::Object& all, JSONValue::Object&& more) {
    for (auto& [key, value] : more) {
        auto const [member, isNew] = all.try_emplace(key);
        auto* const both = std::get_if<JSONValue::Object>(&member->second.content);
        auto* const added = std::get_if<JSONValue::Object>(&value.content);
        if (!isNew && both && added)
            addTo(*both, std::move(*added));
        else
            member->second = std::move(value);
    }
}

bool isNumberOrSwitch(JSONValue const& value) {
    return value.as<std::int64_t>() || value.as<double>() || value.as<bool>();
}

/// Of "name=2024" the value is a text, too, since the field takes no number.
void set(DemoProject& project, std::string const& change) {
    auto const equals = change.find('=');
    auto const path = change.substr(0, equals), text = change.substr(equals + 1);
    auto const value = valueOf(text);
    auto withText = project;
    try {
        return merge(project, patchOf(path, value), ListItems::byNumber);
    } catch (OperationError const& failure) {
        if (!isNumberOrSwitch(value)) throw;
        try {
            merge(withText, patchOf(path, {text}), ListItems::byNumber);
        } catch (OperationError const&) {
            throw failure;
        }
    }
    project = std::move(withText);
}

}

std::string changeProblem(std::string const& text) {
    auto const equals = text.find('=');
    return equals != text.npos && equals > 0 ? ""
                                             : fmt::format("“{}” is no change; those are PATH=VALUE", excerpt(text));
}

std::string apply(DemoProject& project, Patch const& patch) {
    auto const* fields = patch.patch.as<JSONValue::Object>();
    if (!fields) fail("The patch must be a JSON object.");
    auto const before = project;
    merge(project, *fields, ListItems::replacedWhole);
    return difference(before, project);
}

std::string apply(DemoProject& project, SetFields const& fields) {
    auto const before = project;
    for (auto const& change : fields.changes) set(project, change);
    return difference(before, project);
}

std::string apply(DemoProject& project, std::vector<FieldChange> const& changes) {
    auto const before = project;
    JSONValue::Object patch;
    for (auto const& change : changes) addTo(patch, patchOf(change.path, change.value));
    merge(project, std::move(patch), ListItems::byNumber);
    return difference(before, project);
}

}
