#pragma once

#include <TavaroCore/Privacy/Redaction.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace tavaro {

/// The findings in one line, in order and apart from each other; the first to claim a byte has it.
class Claims {
public:
    /// What of a claim counts where an earlier one has some of its text: all or nothing, or what is left.
    enum class Overlap { dropped, keepsRest };

    void claim(SensitiveKind kind, std::size_t start, std::size_t end, Overlap overlap);

    /// Nothing in there is private, whatever a later rule takes it for.
    void reserve(std::size_t start, std::size_t end);

    bool touches(std::size_t start, std::size_t end) const;

    /// Lets the finding that ends at `border` grow up to the next one. False when none of that kind does.
    bool grow(SensitiveKind kind, std::size_t border, std::size_t end);

    /// The findings, which are taken out.
    std::vector<SensitiveMatch> take();

private:
    struct Claim {
        std::size_t start = 0;
        std::size_t end = 0;
        std::optional<SensitiveKind> kind; // none where nothing is private
    };
    std::vector<Claim>::iterator firstEndingAfter(std::size_t at);

    std::vector<Claim> claims_;
};

}
