#pragma once

#include <TavaroCore/Privacy/Private/Claims.h>
#include <TavaroCore/Privacy/Private/LineWindow.h>
#include <TavaroCore/Privacy/Redaction.h>

#include <memory>
#include <string>
#include <vector>

namespace tavaro {

class Expression;

/// The user's own words and patterns.
class CustomTerms {
public:
    explicit CustomTerms(RedactionSettings const& settings);
    ~CustomTerms();

    void beginLine();
    void search(LineWindow const& window, Claims& claims);
    std::vector<std::string> const& warnings() const { return warnings_; }

private:
    struct Pattern;
    void searchWords(LineWindow const& window, Claims& claims) const;
    void searchPattern(Pattern& pattern, LineWindow const& window, Claims& claims);

    std::vector<std::string> words_; // folded
    std::vector<Pattern> patterns_;
    std::vector<std::string> warnings_;
};

}
