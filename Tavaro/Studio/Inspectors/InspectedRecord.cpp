#include <Tavaro/Studio/Inspectors/InspectedRecord.h>

#include <fmt/format.h>

#include <cmath>
#include <unordered_set>

namespace tavaro {

namespace {

constexpr std::string_view wholeProject = "project";

/// Fields with one value each are together; what has parts is a section of its own.
template<class T> constexpr bool isSection =
    !detail::HasFieldEditor<typename detail::ValueIn<T>::Type> &&
    (RecordType<typename detail::ValueIn<T>::Type> || CaseType<typename detail::ValueIn<T>::Type>);
template<class T> constexpr bool isValue = detail::HasFieldEditor<typename detail::ValueIn<T>::Type>;

FieldFacts factsOfSection(std::string_view name) {
    auto const* known = factsFor<DemoProject>(name);
    return known ? *known : FieldFacts{.name = name};
}

/// The path of each list that `forEachItemList` visits, in its order; a test looks whether they agree.
std::vector<std::string> listPaths(DemoProject const& project) {
    std::vector<std::string> paths{"timeline.clips", "zoomEvents",    "overlays",
                                   "silences",       "captions.cues", "layoutCues"};
    for (std::size_t i = 0; i < project.audioTracks.size(); ++i)
        paths.push_back(fmt::format("audioTracks.{}.clips", i));
    if (project.voiceover) paths.emplace_back("voiceover.segments");
    for (auto const* path : {"cameraMoves", "audioTracks", "redactions"}) paths.emplace_back(path);
    return paths;
}

JSONValue::Array eachOf(QVariantList const& list) {
    JSONValue::Array array;
    for (auto const& element : list) array.push_back(toJSON(element));
    return array;
}

}

std::vector<FieldRow> sectionRows(DemoProject const& project, std::string_view section) {
    std::vector<FieldRow> rows;
    forEachField<DemoProject>([&](auto const& field) {
        using Value = std::remove_cvref_t<decltype(project.*field.member)>;
        auto const facts = factsOfSection(field.name);
        if (facts.access == FieldAccess::hidden) return;
        if constexpr (isSection<Value>) {
            if (section == field.name) rows = FieldRows::of(project.*field.member, facts);
        } else if constexpr (isValue<Value>) {
            if (section != wholeProject) return;
            auto row = FieldRows::of(project.*field.member, facts).front();
            row.path = field.name;
            rows.push_back(std::move(row));
        }
    });
    return rows;
}

std::vector<std::string_view> sectionNames() {
    std::vector<std::string_view> names{wholeProject};
    DemoProject const project;
    forEachField<DemoProject>([&](auto const& field) {
        using Value = std::remove_cvref_t<decltype(project.*field.member)>;
        if constexpr (isSection<Value>) {
            if (factsOfSection(field.name).access != FieldAccess::hidden) names.push_back(field.name);
        }
    });
    return names;
}

std::string sectionTitle(std::string_view section) {
    if (section == wholeProject) return "Project";
    auto const facts = factsOfSection(section);
    return facts.label.empty() ? inWords(section) : std::string(facts.label);
}

std::vector<FieldRow> itemRows(DemoProject const& project, UUID const& item) {
    std::vector<FieldRow> rows;
    visitItem(project, item, [&](auto const& record) { rows = FieldRows::of(record); });
    return rows;
}

std::vector<std::string> pathsOfItems(DemoProject const& project, std::span<UUID const> items) {
    std::unordered_set<UUID, UUIDHash> const wanted(items.begin(), items.end());
    auto const lists = listPaths(project);
    auto list = lists.begin();
    std::vector<std::string> paths;
    forEachItemList(project, [&](auto const& items) {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (wanted.contains(items[i].id)) paths.push_back(fmt::format("{}.{}", *list, i));
        }
        ++list;
    });
    return paths;
}

JSONValue givenValue(FieldRow const& row, QVariant const& value) {
    auto const type = value.typeId();
    bool const isNumber = type == QMetaType::Double || type == QMetaType::Int || type == QMetaType::LongLong;
    switch (row.editor) {
    case FieldEditor::wholeNumber:
        if (isNumber && std::abs(value.toDouble()) < 1e15) return std::llround(value.toDouble());
        break;
    case FieldEditor::color:
        // A color is also given as its name or "#rrggbb".
        if (type == QMetaType::QString && QColor::isValidColor(value.toString()))
            return toJSON(QColor(value.toString()));
        break;
    case FieldEditor::choices:
    case FieldEditor::colors:
    case FieldEditor::texts:
        if (value.canConvert<QVariantList>() && value.isValid()) return eachOf(value.toList());
        break;
    default: break;
    }
    return toJSON(value);
}

}
