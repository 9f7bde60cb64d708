#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Texts of many formats in which every secret is marked, to judge the classifier by. `development.txt` is there to be
/// looked at while the rules are worked on; of `held-out.txt` only the totals are, so that they say how well the rules
/// do on what they were not made for.
namespace tavaro {

struct MarkedSecret {
    SensitiveKind kind = SensitiveKind::secret;
    bool isInCatalogue = false; // the built-in expressions alone, without any test of what they match, reach it
    std::size_t line = 0;       // from 0
    std::size_t start = 0;      // bytes into the line
    std::size_t end = 0;
};

struct MarkedText {
    std::string format; // "yaml", "shell" …
    std::string text;   // of one line or more
    std::vector<MarkedSecret> secrets;
};

/// A text a line: its format, a tab, the text, where ⏎ begins another line. A secret is marked as ⟦kind value⟧, with a
/// plus before the kind when it is beyond the catalogue. They are made up; a bar breaks each, so that nobody's scanner
/// takes it for a leak.
std::vector<MarkedText> readMarkedTexts(std::string const& path);

struct Tally {
    int secrets = 0;
    int found = 0;
    int inCatalogue = 0;
    int foundInCatalogue = 0;
    int findings = 0;
    int right = 0; // of the findings

    double recall() const { return secrets ? double(found) / secrets : 1; }
    double recallInCatalogue() const { return inCatalogue ? double(foundInCatalogue) / inCatalogue : 1; }
    double precision() const { return findings ? double(right) / findings : 1; }
    Tally& operator+=(Tally const& other);
};

struct Judgement {
    std::map<std::string, Tally> byFormat;
    std::vector<std::string> missed; // what was not found, with its line
    std::vector<std::string> wrong;  // what was found without reason, with its line

    Tally total() const;
};

/// A secret is found when findings cover each of its bytes; a finding is right when it has some of a secret and at most
/// two bytes around it. Mail addresses, phone numbers and cards must be found as what they are; keys, tokens and other
/// secrets may be taken for each other.
Judgement judge(std::vector<MarkedText> const& texts, RedactionSettings const& settings = {});

}
