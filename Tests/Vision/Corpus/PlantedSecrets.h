#pragma once

#include <TavaroCore/Privacy/Redaction.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace tavaro {

struct PlantedSecret {
    SensitiveKind kind = SensitiveKind::secret;
    std::string format; // "aws", "card" …
    std::string value;
};

/// Bytes of a line that belong to a secret, by its place in a list of them.
struct SecretMark {
    std::size_t start = 0;
    std::size_t end = 0;
    std::size_t secret = 0;
    bool operator==(SecretMark const&) const = default;
};

struct SecretLine {
    std::string text;
    std::vector<SecretMark> marks;

    /// Bytes of it as a line of their own.
    SecretLine part(std::size_t start, std::size_t end) const;
    bool operator==(SecretLine const&) const = default;
};

/// Fills the places of templates, "{aws}", "{mail}", "{commit}", with values made up from a seed: secrets of many
/// formats, and ordinary ones that look much like them.
class SecretPlanting {
public:
    explicit SecretPlanting(std::uint32_t seed) : random_(seed) {}

    /// "{key}", alone on its line, becomes the lines of a key file.
    std::vector<SecretLine> planted(std::string_view templateLine);
    std::vector<PlantedSecret> const& secrets() const { return secrets_; }

    /// The blocks of a file of templates beside this one, which lines of "====" part.
    static std::vector<std::vector<std::string>> blocks(std::string const& name);

private:
    std::string valueOf(std::string_view pattern);
    std::string wordOf(std::string_view choices);
    std::string card();
    std::vector<SecretLine> keyFile();

    std::mt19937 random_;
    std::vector<PlantedSecret> secrets_;
};

}
