#pragma once

#include <string>
#include <string_view>

namespace tavaro {

/// What the package manager says of one package, in the words of "apt-cache policy".
struct PackagePolicy {
    std::string installed;  // version; empty: it is not
    std::string candidate;  // what it would install now; empty: nothing
    bool isOffered = false; // whether any source has the package, and not only this machine

    bool hasNewer() const { return !candidate.empty() && candidate != installed; }
};

/// Of what it prints in the language of the machine "C".
PackagePolicy packagePolicy(std::string_view text);
/// Of "dpkg-query -S": the package that a file belongs to; empty where none does.
std::string packageOf(std::string_view text);

}
