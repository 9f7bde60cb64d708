#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Inspectors/FieldRows.h>
#include <Tavaro/Studio/Lists/KeyedRows.h>

#include <QStringList>
#include <QVariantMap>

#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace tavaro {

using RowsByPath = KeyedRows<std::string>;

/// The fields of what is inspected, a row each: of a section of the document ("screen"), or of items, which are then
/// changed together. A row is known by its field's path. Roles: `path`, `label`, `unit`, `least`, `most`, `step`,
/// `shownFactor`, `editor` (a name of `FieldEditor`), `value`, `isSet`, `isOptional`, `isReadOnly`, `isMixed` (the
/// items differ in it), `choices` ({name, label}), `depth`.
///
/// A value that is set is one step of the project's history, "Change Shadow Radius", made with the checks of a patch;
/// between `beginChange` and `endChange`, as while a slider is dragged, the values of a field are one step together.
/// What is refused changes nothing, and `refused` says why, and of which field. Belongs to the project's thread.
class InspectorModel final : public RowsByPath {
    Q_OBJECT
    Q_PROPERTY(QString title READ title NOTIFY inspectedChanged)
    Q_PROPERTY(QString subject READ subject NOTIFY inspectedChanged)
    Q_PROPERTY(QVariantMap values READ values NOTIFY inspectedChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY inspectedChanged)

public:
    explicit InspectorModel(std::shared_ptr<OpenProject> project);

    /// "Screen", "Zoom 1.8×", "3 Items"
    QString title() const;
    /// What is inspected: the name of a section, or identities.
    QString subject() const;
    bool isEmpty() const { return fields_.empty(); }

    Q_INVOKABLE void inspectSection(QString const& name);
    /// By their identities; the first one is shown. Items of another kind than the first are passed over.
    Q_INVOKABLE void inspectItems(QStringList const& identities);
    void inspectItems(std::vector<UUID> items);

    /// False where it is refused or nothing changes. No value takes a field back to what a new record has.
    Q_INVOKABLE bool set(QString const& path, QVariant const& value);
    /// Makes a field that need not be there be there, with a value to begin with, or not.
    Q_INVOKABLE bool switchOn(QString const& path, bool isOn);
    Q_INVOKABLE void beginChange() { group_ = project_->newGroup(); }
    Q_INVOKABLE void endChange() { group_ = {}; }
    /// The value of a field; nothing for one that is not there.
    Q_INVOKABLE QVariant value(QString const& path) const;
    /// {name, label}, of a field that is one of several.
    Q_INVOKABLE QVariantList choices(QString const& path) const;
    /// Of all fields, by their paths.
    QVariantMap values() const;

    static QHash<int, QByteArray> roles();
    QHash<int, QByteArray> roleNames() const override { return roles(); }
    QVariant data(QModelIndex const& index, int role) const override;
    bool setData(QModelIndex const& index, QVariant const& value, int role) override;

Q_SIGNALS:
    void inspectedChanged();
    void refused(QString const& sentence, QString const& path);

private:
    struct Field {
        FieldRow row;
        bool isMixed = false;
    };

    bool isShown(ProjectChange const& change) const;
    bool hasOthersOfTheirPaths(std::vector<Field> const& now) const;
    void update();
    std::vector<Field> fieldsNow() const;
    void markMixed(std::vector<Field>& fields, std::vector<UUID> const& items) const;
    Field const* fieldAt(std::string const& path) const;
    bool change(FieldRow const& row, QVariant const& value);
    void changeItems(DemoProject& project, std::vector<UUID> const& items, FieldRow const& row,
                     QVariant const& value) const;

    std::shared_ptr<OpenProject> project_;
    std::variant<std::string, std::vector<UUID>> inspected_; // a section, or items
    std::vector<Field> fields_;
    EditGroup group_;
    OpenProject::Observation observation_;
};

}
