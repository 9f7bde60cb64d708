#pragma once

#include <TavaroCore/Project/DemoProject.h>

#include <bitset>
#include <cstddef>
#include <string_view>
#include <vector>

namespace tavaro {

/// Which fields of the document are not what they were, by their names in it.
class ChangedFields {
public:
    bool any() const { return bits_.any(); }
    bool contains(std::string_view name) const {
        std::size_t index = 0;
        bool isFound = false;
        forEachField<DemoProject>([&](auto const& field) { isFound |= bits_[index++] && field.name == name; });
        return isFound;
    }
    std::vector<std::string_view> names() const {
        std::vector<std::string_view> names;
        std::size_t index = 0;
        forEachField<DemoProject>([&](auto const& field) {
            if (bits_[index++]) names.push_back(field.name);
        });
        return names;
    }

    /// The field at that place of the document's list.
    void add(std::size_t index) { bits_.set(index); }

    bool operator==(ChangedFields const&) const = default;

private:
    std::bitset<fieldCount<DemoProject>> bits_;
};

}
