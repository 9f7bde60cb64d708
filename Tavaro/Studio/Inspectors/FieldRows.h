#pragma once

#include <Tavaro/Studio/Inspectors/FieldTable.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Lists/ItemTitle.h>

#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <QVariant>

#include <array>
#include <concepts>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tavaro {

/// With what a field is changed.
enum class FieldEditor {
    number,
    wholeNumber,
    toggle,
    choice,  // one of names
    choices, // any of names
    color,
    colors,
    text,
    texts,
    file,
    point,
    rect,
    size,
    section, // a heading of the fields that follow, one deeper
};

constexpr std::array<std::string_view, 14> namesOf(FieldEditor) {
    return {"number", "wholeNumber", "toggle", "choice", "choices", "color", "colors",
            "text",   "texts",       "file",   "point",  "rect",    "size",  "section"};
}

struct FieldChoice {
    std::string_view name;
    std::string label;
};

/// A field of a record as an inspector shows it.
struct FieldRow {
    std::string path; // in the record: "kind.title.text"
    FieldFacts facts;
    std::string label;
    FieldEditor editor = FieldEditor::text;
    QVariant value;
    std::vector<FieldChoice> choices;
    bool isOptional = false; // it may have no value
    int depth = 0;           // sections around it
};

/// "Corner Radius" as "Corner radius", as the labels of controls are written; steps of the history keep theirs.
QString inSentence(std::string_view label);

namespace detail {

template<class T> struct FieldEditorOf {};
template<> struct FieldEditorOf<bool> { static constexpr auto editor = FieldEditor::toggle; };
template<> struct FieldEditorOf<double> { static constexpr auto editor = FieldEditor::number; };
template<> struct FieldEditorOf<float> { static constexpr auto editor = FieldEditor::number; };
template<> struct FieldEditorOf<std::int64_t> { static constexpr auto editor = FieldEditor::wholeNumber; };
template<> struct FieldEditorOf<std::string> { static constexpr auto editor = FieldEditor::text; };
template<> struct FieldEditorOf<RGBAColor> { static constexpr auto editor = FieldEditor::color; };
template<> struct FieldEditorOf<UnitPoint2> { static constexpr auto editor = FieldEditor::point; };
template<> struct FieldEditorOf<NormalizedRect> { static constexpr auto editor = FieldEditor::rect; };
template<> struct FieldEditorOf<Size2> { static constexpr auto editor = FieldEditor::size; };
template<> struct FieldEditorOf<std::vector<RGBAColor>> { static constexpr auto editor = FieldEditor::colors; };
template<> struct FieldEditorOf<std::vector<std::string>> { static constexpr auto editor = FieldEditor::texts; };
template<NamedEnum E> struct FieldEditorOf<E> { static constexpr auto editor = FieldEditor::choice; };
template<NamedEnum E> struct FieldEditorOf<std::set<E>> { static constexpr auto editor = FieldEditor::choices; };

template<class T>
concept HasFieldEditor = requires {
    FieldEditorOf<T>::editor;
};

template<class T> struct ValueIn { using Type = T; };
template<class T> struct ValueIn<std::optional<T>> { using Type = T; };
template<class T> struct ElementOf { using Type = T; };
template<class T> struct ElementOf<std::set<T>> { using Type = T; };

template<NamedEnum E> std::vector<FieldChoice> choicesOf() {
    std::vector<FieldChoice> choices;
    for (auto const each : allCases<E>()) {
        if constexpr (requires { displayName(each); })
            choices.push_back({nameOf(each), std::string(displayName(each))});
        else
            choices.push_back({nameOf(each), inWords(nameOf(each))});
    }
    return choices;
}

}

/// The rows of a record's fields, those of the records inside of it behind a section's row.
class FieldRows {
public:
    template<RecordType R> static std::vector<FieldRow> of(R const& record) {
        FieldRows rows;
        rows.addFields(record, "");
        return std::move(rows.rows_);
    }
    /// Of one field of the document.
    template<class T> static std::vector<FieldRow> of(T const& value, FieldFacts const& facts) {
        FieldRows rows;
        rows.addField(value, facts, "");
        return std::move(rows.rows_);
    }

private:
    template<RecordType R> void addFields(R const& record, std::string const& before) {
        forEachField<R>([&](auto const& field) {
            auto const* known = factsFor<R>(field.name);
            auto const facts = known ? *known : FieldFacts{.name = field.name};
            if (facts.access == FieldAccess::hidden) return;
            addField(record.*field.member, facts, before + std::string(field.name));
        });
    }

    template<class Field> void addField(Field const& field, FieldFacts const& facts, std::string const& path) {
        using T = typename detail::ValueIn<Field>::Type;
        if constexpr (detail::HasFieldEditor<T>) {
            auto& row = add(facts, path, detail::FieldEditorOf<T>::editor, toVariant(field));
            row.isOptional = detail::IsOptional<Field>::value;
            if constexpr (NamedEnum<typename detail::ElementOf<T>::Type>)
                row.choices = detail::choicesOf<typename detail::ElementOf<T>::Type>();
            if constexpr (std::same_as<T, std::set<SensitiveKind>>) // one's own words are looked for by being there
                std::erase_if(row.choices, [](auto const& each) { return each.name == nameOf(SensitiveKind::custom); });
        } else if constexpr (CaseType<T>) {
            addCase(field, facts, path);
        } else if constexpr (detail::IsOptional<Field>::value) {
            add(facts, path, FieldEditor::section, field.has_value()).isOptional = true;
            if (field) addInside(*field, path);
        } else if constexpr (RecordType<T>) {
            add(facts, path, FieldEditor::section, {});
            addInside(field, path);
        } // lists of records have models of their own
    }

    template<RecordType R> void addInside(R const& record, std::string const& path) {
        ++depth_;
        addFields(record, path.empty() ? path : path + ".");
        --depth_;
    }

    template<class C> void addCase(C const& value, FieldFacts const& facts, std::string const& path) {
        auto const name = C::caseNames[value.content.index()];
        auto& row = add(facts, path, FieldEditor::choice, toQString(name));
        for (auto const each : C::caseNames) row.choices.push_back({each, inWords(each)});
        auto const inside = path.empty() ? std::string(name) : path + "." + std::string(name);
        std::visit([&](auto const& content) { addInside(content, inside); }, value.content);
    }

    FieldRow& add(FieldFacts const& facts, std::string const& path, FieldEditor editor, QVariant value) {
        auto label = facts.label.empty() ? inWords(facts.name) : std::string(facts.label);
        if (facts.isFile) editor = FieldEditor::file;
        return rows_.emplace_back(FieldRow{path, facts, std::move(label), editor, std::move(value), {}, false, depth_});
    }

    std::vector<FieldRow> rows_;
    int depth_ = 0;
};

}
