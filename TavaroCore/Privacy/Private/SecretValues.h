#pragma once

#include <TavaroCore/Privacy/Private/SecretLabels.h>

#include <cstddef>
#include <string_view>

namespace tavaro {

/// How a value follows its label.
enum class ValueForm {
    quoted,   // password = "x"
    setting,  // PASSWORD=x, --password=x, a=b;password=x
    assigned, // password = x
    colon,    // password: x
    cell,     // | password | x |
    tag,      // <password>x</password>
    flag,     // --password x
    sentence, // the password is x
    adjacent, // password x
    nextLine, // the line after a label alone
};

/// What may be a secret, and what its surroundings tell. Places are bytes of a plain line.
struct LabelledValue {
    LabelKind label = LabelKind::secret;
    ValueForm form = ValueForm::colon;
    std::size_t start = 0;
    std::size_t end = 0;
    bool isAlone = false;        // nothing but closing marks, comments or the next label follows
    bool isInCall = false;       // an argument in parentheses, as code has it
    bool isOfShell = false;      // "PASSWORD=x", "--password x"
    bool isOfLongerName = false; // "TOKEN_BUCKETS": words that nothing is known of are joined to the label
};

/// Whether the value of the label is a secret rather than code, a placeholder, a path, a type, a sentence …
bool isSecret(LabelledValue const& value, std::string_view text);

}
