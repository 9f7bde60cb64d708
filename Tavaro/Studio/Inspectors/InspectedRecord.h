#pragma once

#include <Tavaro/Model/Operations/PatchOperations.h>
#include <Tavaro/Studio/Inspectors/FieldRows.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

/// The rows of a field of the document ("screen", "intro"), as they are to be looked at; of "project" those fields that
/// hold one value each, as its name. None for a name that the document does not have.
std::vector<FieldRow> sectionRows(DemoProject const& project, std::string_view section);
/// The names of the sections that have rows, in the document's order, "project" first.
std::vector<std::string_view> sectionNames();
/// "Screen"
std::string sectionTitle(std::string_view section);

/// Of the item of that identity; none where it is gone.
std::vector<FieldRow> itemRows(DemoProject const& project, UUID const& item);

/// Where items are in the document, in its order: "captions.cues.3". Those that are gone are left out.
std::vector<std::string> pathsOfItems(DemoProject const& project, std::span<UUID const> items);

/// What was given for a row, as the document's JSON has it: whole numbers where the field takes those.
JSONValue givenValue(FieldRow const& row, QVariant const& value);

}
