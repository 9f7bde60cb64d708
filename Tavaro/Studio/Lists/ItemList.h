#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>
#include <Tavaro/Studio/Lists/FieldVariant.h>
#include <Tavaro/Studio/Lists/ItemTitle.h>
#include <Tavaro/Studio/Lists/KeyedRows.h>

#include <TavaroCore/Records/Hash.h>

#include <functional>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace tavaro {

/// The items of a kind, of every list of the document that has them, as rows known by the items' identity. A role for
/// each field of the record (`identity` for `id`), and: `title`; `from` and `length`, the output seconds that it takes;
/// for a sound, `track`, the identity of its track. Follows the document of an open project, whoever edits it; what
/// is shown is read from the document itself. Belongs to the project's thread.
template<class Item> class ItemList final : public KeyedRows<UUID, UUIDHash> {
public:
    explicit ItemList(std::shared_ptr<OpenProject> project) : project_(std::move(project)) {
        observation_ = project_->observe([this](ProjectChange const& change) {
            if (!change.fields.contains(fieldOf(kindOf(Item{})))) return;
            if (change.items.empty())
                update();
            else
                update(change.items);
        });
        update();
    }

    QHash<int, QByteArray> roleNames() const override {
        QHash<int, QByteArray> names{{titleRole, "title"}, {fromRole, "from"}, {lengthRole, "length"}};
        if constexpr (isSound) names.insert(trackRole, "track");
        int role = firstRole;
        forEachField<Item>([&](auto const& field) {
            auto const name = field.name == "id" ? std::string_view("identity") : field.name;
            names.insert(role++, QByteArray(name.data(), static_cast<qsizetype>(name.size())));
        });
        return names;
    }

    QVariant data(QModelIndex const& index, int role) const override {
        auto const shown = index.isValid() ? itemAt(index.row()) : Shown{};
        if (!shown.item) return {};
        if (role == titleRole || role == Qt::DisplayRole) return toQString(titleOf(*shown.item));
        if (role == trackRole && isSound) return toQString(project_->document().audioTracks[shown.list].id.text());
        if (role == fromRole || role == lengthRole) return placeVariant(*shown.item, role);
        return fieldVariant(*shown.item, role - firstRole);
    }

    /// Null for a row of which the item is gone, while views are being told.
    Item const* item(int row) const { return itemAt(row).item; }

private:
    static constexpr bool isSound = std::same_as<Item, AudioClip>;
    static constexpr int fromRole = firstRole + 100, lengthRole = fromRole + 1, titleRole = fromRole + 2,
                         trackRole = fromRole + 3;

    struct Shown {
        Item const* item = nullptr;
        std::size_t list = 0; // of those that hold such items
    };

    template<class Visit> void forEachList(Visit&& visit) const {
        forEachItemList(project_->document(), [&](auto const& items) {
            if constexpr (std::same_as<std::remove_cvref_t<decltype(items)>, std::vector<Item>>)
                visit(std::span<Item const>(items));
        });
    }

    Shown itemAt(int row) const {
        auto const& id = key(row);
        Shown shown;
        auto place = static_cast<std::size_t>(row);
        std::size_t list = 0;
        forEachList([&](std::span<Item const> items) {
            if (!shown.item && place < items.size() && items[place].id == id) shown = {&items[place], list};
            place -= items.size(); // wraps to what no list has
            ++list;
        });
        return shown.item ? shown : search(id);
    }

    Shown search(UUID const& id) const {
        Shown shown;
        std::size_t list = 0;
        forEachList([&](std::span<Item const> items) {
            auto const found = std::ranges::find(items, id, &Item::id);
            if (found != items.end()) shown = {&*found, list};
            ++list;
        });
        return shown;
    }

    static QVariant placeVariant(Item const& item, int role) {
        auto const place = placeOf(item);
        if (!place) return {};
        return role == fromRole ? place->start : place->duration;
    }
    static QVariant fieldVariant(Item const& item, int index) {
        QVariant value;
        int at = 0;
        forEachField<Item>([&](auto const& field) {
            if (at++ == index) value = toVariant(item.*field.member);
        });
        return value;
    }

    static std::size_t contentOf(Item const& item, std::size_t list) {
        auto content = list;
        forEachField<Item>([&](auto const& field) {
            if (field.name != "id") detail::mixHash(content, hashOf(item.*field.member));
        });
        return content;
    }

    /// Of items that are where they were: their kinds have one list each.
    void update(std::vector<ItemPlace> const& items) {
        for (auto const& place : items) {
            if (place.field != fieldOf(kindOf(Item{}))) continue;
            auto const row = static_cast<int>(place.index);
            showRow(row, contentOf(*item(row), 0));
        }
    }

    void update() {
        std::vector<Row> now;
        std::size_t list = 0;
        forEachList([&](std::span<Item const> items) {
            for (auto const& item : items) now.push_back({item.id, contentOf(item, list)});
            ++list;
        });
        showRows(now);
    }

    std::shared_ptr<OpenProject> project_;
    OpenProject::Observation observation_;
};

/// The list of the items of that kind.
std::unique_ptr<RowsModel> makeItemList(ItemKind kind, std::shared_ptr<OpenProject> const& project);

}
