#include <Tavaro/Studio/Inspectors/InspectorModel.h>

#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Studio/Inspectors/InspectedRecord.h>
#include <Tavaro/Studio/Inspectors/NumberText.h>

#include <TavaroCore/Editing/ClipEdits.h>

#include <fmt/format.h>

#include <functional>
#include <unordered_map>
#include <unordered_set>

namespace tavaro {

namespace {

/// How many items are compared for a mark that says only that they differ.
constexpr std::size_t mostCompared = 100;

enum Role {
    path,
    label,
    unit,
    least,
    most,
    step,
    shownFactor,
    editor,
    value,
    isSet,
    isOptional,
    isReadOnly,
    isMixed,
    choices,
    depth
};

constexpr std::array<char const*, 15> roleTexts{"path",       "label",       "unit",    "least",   "most",
                                                "step",       "shownFactor", "editor",  "value",   "isSet",
                                                "isOptional", "isReadOnly",  "isMixed", "choices", "depth"};

std::size_t contentOf(FieldRow const& row, bool isMixed) {
    return std::hash<std::string>{}(
        fmt::format("{} {} {} {}", row.label, nameOf(row.editor), isMixed, encodeJSON(toJSON(row.value))));
}

using Kinds = std::unordered_map<UUID, ItemKind, UUIDHash>;

/// Of those items that there are; one walk, however many they are.
Kinds kindsOf(DemoProject const& project, std::vector<UUID> const& items) {
    if (items.empty()) return {};
    std::unordered_set<UUID, UUIDHash> const wanted(items.begin(), items.end());
    Kinds kinds;
    forEachItem(project, [&](auto const& item) {
        if (wanted.contains(item.id)) kinds.emplace(item.id, kindOf(item));
    });
    return kinds;
}

QVariantList listed(std::vector<FieldChoice> const& choices) {
    QVariantList list;
    for (auto const& choice : choices)
        list.push_back(QVariantMap{{QStringLiteral("name"), toQString(choice.name)},
                                   {QStringLiteral("label"), inSentence(choice.label)}});
    return list;
}

/// Of a field that had none.
QVariant firstValue(FieldRow const& row) {
    switch (row.editor) {
    case FieldEditor::number:
    case FieldEditor::wholeNumber: return row.facts.least;
    case FieldEditor::toggle: return true;
    case FieldEditor::choice: return toQString(row.choices.front().name);
    case FieldEditor::color: return QColor(Qt::white);
    case FieldEditor::point: return QPointF(0.5, 0.5);
    case FieldEditor::rect: return QRectF(0, 0, 1, 1);
    case FieldEditor::size: return QSize(1920, 1080);
    case FieldEditor::choices:
    case FieldEditor::colors:
    case FieldEditor::texts: return QVariantList();
    default: return QString();
    }
}

/// Numbers in the words in which they are shown and typed.
QString refusal(FieldRow const& row, QVariant const& value, Error const& error) {
    bool const isNumber = row.editor == FieldEditor::number || row.editor == FieldEditor::wholeNumber;
    if (!isNumber || !value.canConvert<double>() || value.typeId() == QMetaType::QString)
        return toQString(error.what());
    auto const shown = NumberText::shown(value, row.facts.shownFactor, row.facts.step).toStdString();
    auto const unit = row.facts.unit.empty() ? std::string() : fmt::format(" {}", row.facts.unit);
    return toQString(fmt::format("{} cannot be {}{}.", inSentence(row.label).toStdString(), shown, unit));
}

bool isThere(QVariant const& value) { return value.isValid() && !value.isNull(); }

/// A clip's speed retimes what is over it, so it is no field that is merely written.
void changeClips(DemoProject& project, std::vector<UUID> const& clips, FieldRow const& row, QVariant const& value) {
    for (auto const& clip : clips) {
        if (row.path == "speed") setSpeed(project, clip, value.toDouble());
        if (row.path == "isMuted") setMuted(project, clip, value.toBool());
    }
}

}

InspectorModel::InspectorModel(std::shared_ptr<OpenProject> project) : project_(std::move(project)) {
    observation_ = project_->observe([this](ProjectChange const& change) {
        if (isShown(change)) update();
    });
}

QString InspectorModel::title() const {
    if (auto const* section = std::get_if<std::string>(&inspected_)) return toQString(sectionTitle(*section));
    auto const& items = std::get<std::vector<UUID>>(inspected_);
    std::string title;
    if (items.size() > 1) title = fmt::format("{} Items", items.size());
    if (items.size() == 1) visitItem(project_->document(), items[0], [&](auto const& item) { title = titleOf(item); });
    return toQString(title);
}

QString InspectorModel::subject() const {
    if (auto const* section = std::get_if<std::string>(&inspected_)) return toQString(*section);
    QStringList identities;
    for (auto const& id : std::get<std::vector<UUID>>(inspected_)) identities.push_back(toQString(id.text()));
    return identities.join(QLatin1Char(' '));
}

/// Whether a change of the project may be seen in the fields.
bool InspectorModel::isShown(ProjectChange const& change) const {
    auto const* section = std::get_if<std::string>(&inspected_);
    return section && *section != "project" ? change.fields.contains(*section) : change.fields.any();
}

void InspectorModel::inspectSection(QString const& name) {
    endChange();
    inspected_ = name.toStdString();
    update();
}

void InspectorModel::inspectItems(QStringList const& identities) {
    std::vector<UUID> items;
    for (auto const& identity : identities) {
        if (auto const id = UUID::parse(identity.toStdString())) items.push_back(*id);
    }
    inspectItems(std::move(items));
}

void InspectorModel::inspectItems(std::vector<UUID> items) {
    auto const kinds = kindsOf(project_->document(), items);
    auto const first = std::ranges::find_if(items, [&](UUID const& id) { return kinds.contains(id); });
    auto const kind = first == items.end() ? ItemKind::clip : kinds.at(*first);
    std::erase_if(items, [&](UUID const& id) {
        auto const found = kinds.find(id);
        return found == kinds.end() || found->second != kind;
    });
    inspected_ = std::move(items);
    endChange();
    update();
}

std::vector<InspectorModel::Field> InspectorModel::fieldsNow() const {
    auto const* section = std::get_if<std::string>(&inspected_);
    auto const* items = std::get_if<std::vector<UUID>>(&inspected_);
    std::vector<FieldRow> rows;
    if (section) rows = sectionRows(project_->document(), *section);
    if (items && !items->empty()) rows = itemRows(project_->document(), items->front());
    std::vector<Field> fields;
    for (auto& row : rows) fields.push_back({std::move(row), false});
    if (items && items->size() > 1) markMixed(fields, *items);
    return fields;
}

void InspectorModel::markMixed(std::vector<Field>& fields, std::vector<UUID> const& items) const {
    for (std::size_t i = 1; i < std::min(items.size(), mostCompared); ++i) {
        auto const others = itemRows(project_->document(), items[i]);
        for (auto& field : fields) {
            auto const other = std::ranges::find(others, field.row.path, &FieldRow::path);
            field.isMixed = field.isMixed || other == others.end() || other->value != field.row.value;
        }
    }
}

/// Whether a path leads to another field than before: the style of a zoom is none of a redaction.
bool InspectorModel::hasOthersOfTheirPaths(std::vector<Field> const& now) const {
    return std::ranges::any_of(now, [&](Field const& field) {
        auto const* before = fieldAt(field.row.path);
        return before && before->row.label != field.row.label;
    });
}

void InspectorModel::update() {
    if (auto* const items = std::get_if<std::vector<UUID>>(&inspected_)) {
        auto const there = kindsOf(project_->document(), *items);
        std::erase_if(*items, [&](UUID const& id) { return !there.contains(id); });
    }
    auto now = fieldsNow();
    if (hasOthersOfTheirPaths(now)) {
        fields_.clear();
        showRows({});
    }
    fields_ = std::move(now);
    std::vector<Row> rows;
    for (auto const& field : fields_) rows.push_back({field.row.path, contentOf(field.row, field.isMixed)});
    showRows(rows);
    Q_EMIT inspectedChanged();
}

InspectorModel::Field const* InspectorModel::fieldAt(std::string const& path) const {
    auto const found = std::ranges::find_if(fields_, [&](Field const& field) { return field.row.path == path; });
    return found == fields_.end() ? nullptr : &*found;
}

QVariant InspectorModel::value(QString const& path) const {
    auto const* field = fieldAt(path.toStdString());
    return field ? field->row.value : QVariant();
}

QVariantList InspectorModel::choices(QString const& path) const {
    auto const* field = fieldAt(path.toStdString());
    return field ? listed(field->row.choices) : QVariantList();
}

QVariantMap InspectorModel::values() const {
    QVariantMap values;
    for (auto const& field : fields_) values.insert(toQString(field.row.path), field.row.value);
    return values;
}

void InspectorModel::changeItems(DemoProject& project, std::vector<UUID> const& items, FieldRow const& row,
                                 QVariant const& value) const {
    auto const kinds = kindsOf(project, items);
    if (!kinds.empty() && kinds.begin()->second == ItemKind::clip) return changeClips(project, items, row, value);
    std::vector<operations::FieldChange> changes;
    for (auto const& path : pathsOfItems(project, items))
        changes.push_back({path + "." + row.path, givenValue(row, value)});
    perform(project, changes, project_->package());
    if (kinds.empty() || kinds.begin()->second != ItemKind::redaction) return;
    std::unordered_set<UUID, UUIDHash> const changed(items.begin(), items.end());
    for (auto& track : project.redactions.edit())
        if (changed.contains(track.id)) track.isAutomatic = false; // the next scan leaves it as it is
}

bool InspectorModel::change(FieldRow const& row, QVariant const& value) {
    auto const name = fmt::format("Change {}", row.label);
    auto const outcome = project_->edit(
        name,
        [&](DemoProject& project) {
            auto const* section = std::get_if<std::string>(&inspected_);
            if (!section) return changeItems(project, std::get<std::vector<UUID>>(inspected_), row, value);
            auto const above = *section == "project" ? std::string() : *section;
            auto const path = above.empty() || row.path.empty() ? above + row.path : above + "." + row.path;
            perform(project, {{path, givenValue(row, value)}}, project_->package());
        },
        group_);
    return outcome.isChanged;
}

bool InspectorModel::set(QString const& path, QVariant const& value) {
    auto const* field = fieldAt(path.toStdString());
    if (!field || field->row.facts.access != FieldAccess::editable) return false;
    auto const row = field->row; // the change makes the fields anew
    // An optional part is switched on and off.
    auto given = value;
    if (row.editor == FieldEditor::section && row.isOptional)
        given = value.toBool() ? QVariant(QVariantMap()) : QVariant();
    try {
        return change(row, given);
    } catch (Error const& error) {
        Q_EMIT refused(refusal(row, given, error), path);
        // What shows the field has the refused value on it.
        if (auto const at = rowOf(row.path)) Q_EMIT dataChanged(index(*at), index(*at));
        return false;
    }
}

bool InspectorModel::switchOn(QString const& path, bool isOn) {
    auto const* field = fieldAt(path.toStdString());
    if (!field) return false;
    if (field->row.editor == FieldEditor::section) return set(path, isOn);
    return set(path, isOn ? firstValue(field->row) : QVariant());
}

QHash<int, QByteArray> InspectorModel::roles() {
    QHash<int, QByteArray> names;
    for (std::size_t i = 0; i < roleTexts.size(); ++i) names.insert(firstRole + static_cast<int>(i), roleTexts[i]);
    return names;
}

QVariant InspectorModel::data(QModelIndex const& index, int role) const {
    auto const* field = index.isValid() ? fieldAt(key(index.row())) : nullptr;
    if (!field) return {};
    auto const& row = field->row;
    switch (role - firstRole) {
    case Role::path: return toQString(row.path);
    case Role::label: return inSentence(row.label);
    case Role::unit: return toQString(row.facts.unit);
    case Role::least: return row.facts.least;
    case Role::most: return row.facts.most;
    case Role::step: return row.facts.step;
    case Role::shownFactor: return row.facts.shownFactor;
    case Role::editor: return toQString(nameOf(row.editor));
    case Role::value: return row.value;
    case Role::isSet: return isThere(row.value) && !(row.editor == FieldEditor::section && !row.value.toBool());
    case Role::isOptional: return row.isOptional;
    case Role::isReadOnly: return row.facts.access == FieldAccess::readOnly;
    case Role::isMixed: return field->isMixed;
    case Role::choices: return listed(row.choices);
    case Role::depth: return row.depth;
    default: return role == Qt::DisplayRole ? toQString(row.label) : QVariant();
    }
}

bool InspectorModel::setData(QModelIndex const& index, QVariant const& value, int role) {
    if (!index.isValid() || (role != firstRole + Role::value && role != Qt::EditRole)) return false;
    return set(toQString(key(index.row())), value);
}

}
