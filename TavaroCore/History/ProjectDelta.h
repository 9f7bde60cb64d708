#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tavaro {

class ChangedFields;
struct DemoProject;
struct ItemEdit;

/// What turns one document into another, and nothing that both have. Shared parts (the log, the transcript) are kept
/// as they are, shared; everything else as a compact list of changes, in which an item that only moved in time costs
/// about a byte a number.
class ProjectDelta {
public:
    ProjectDelta() = default;
    /// Nothing is kept when the documents are equal.
    static ProjectDelta between(DemoProject const& from, DemoProject const& to);

    /// The same where `to` is `from` with other values of some items, ascending in each list; costs by those.
    static ProjectDelta between(DemoProject const& from, std::span<ItemEdit const> to);

    bool isEmpty() const { return changes_.empty(); }
    /// Of the document itself; what changed inside of a field is not told.
    ChangedFields changedFields() const;
    /// Turns `from` into `to`, exactly, and returns the way back. The document must equal `from`.
    ProjectDelta apply(DemoProject& project) const;
    /// Memory held, with the shared parts.
    std::size_t bytes() const;

private:
    friend class DeltaWriter;
    friend class DeltaReader;

    std::string changes_;
    std::vector<std::shared_ptr<void const>> parts_; // in the order in which the changes name them
    std::size_t partBytes_ = 0;
};

}
