#include <TavaroCore/Privacy/KeyFormats.h>

#include <TavaroCore/Privacy/Characters.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

namespace {

// What the services' own documentation, and the secret scanning of code hosts, say of their keys.
constexpr std::string_view formats[] = {
    "$1$%t1+$%c22",                // crypt(5): MD5
    "$2a$%d2$%c53",                // bcrypt
    "$2b$%d2$%c53",                // bcrypt
    "$2y$%d2$%c53",                // bcrypt
    "$5$%c1+$%c43",                // SHA-256
    "$6$%c1+$%c86",                // SHA-512
    "$y$%c1+$%c1+$%c43",           // yescrypt
    "%d8+:AA%u32+",                // Telegram bots
    "%h32-us%d1+",                 // Mailchimp
    "%h36NRAL",                    // New Relic, licenses
    "%w14.atlasv1.%u60+",          // Terraform Cloud
    "%w3%d1Q~%t31+",               // Azure, secrets of applications
    "1//0%u40+",                   // Google, for new tokens
    "A3-%U6-%U6-%U5-%U5-%U5-%U5",  // 1Password, secret keys
    "AAAA%u7:APA91b%u130+",        // Firebase messaging
    "AGE-SECRET-KEY-1%U58",        // age
    "AIza%u35",                    // Google
    "AKCp%w60+",                   // Artifactory
    "AKIA%U16",                    // Amazon
    "AKID%w32+",                   // Tencent
    "AQVN%u35+",                   // Yandex
    "ASIA%U16",                    // Amazon, for a time
    "ATATT3%t160+",                // Atlassian
    "ATBB%w32+",                   // Bitbucket
    "ATCTT3%t160+",                // Atlassian, scoped
    "BBDC-%b40+",                  // Bitbucket data center
    "CCIPAT_%w22_%h40",            // CircleCI
    "CFPAT-%u43",                  // Contentful
    "CLOJARS_%h60",                // Clojars
    "EAA%w100+",                   // Facebook
    "EZAK%w54",                    // EasyPost
    "EZTK%w54",                    // EasyPost, tests
    "FLWSECK-%w32-X",              // Flutterwave
    "FLWSECK_TEST-%w32-X",         // Flutterwave, tests
    "GOCSPX-%u28",                 // Google, secrets of applications
    "HRKU-%u36+",                  // Heroku
    "IQoJb3JpZ2lu%b80+",           // Amazon, tokens of sessions
    "LTAI%w16+",                   // Alibaba
    "MT%w21+.%u6.%u27+",           // Discord bots: a number in base64 begins with M, N or O
    "NRAK-%U27",                   // New Relic
    "NRII-%u32",                   // New Relic, inserts
    "NT%w21+.%u6.%u27+",           // Discord bots
    "OT%w21+.%u6.%u27+",           // Discord bots
    "PMAK-%h24-%h34",              // Postman
    "SCW%U17",                     // Scaleway
    "SG.%u16+.%u16+",              // SendGrid
    "SK%h32",                      // Twilio
    "SWMTKN-1-%l49+-%l25",         // Docker Swarm
    "T%U8+/B%U8+/%w24",            // Slack, in the address of a webhook
    "api/webhooks/%d17+/%<%u60+",  // Discord, in the address of a webhook
    "api_org_%w34",                // Hugging Face
    "bkua_%h40",                   // Buildkite
    "cio%w32",                     // crates.io
    "crates-io-%w32",              // crates.io
    "dapi%h32",                    // Databricks
    "dapi%h32-%d1",                // Databricks
    "dckr_oat_%u32+",              // Docker, organizations
    "dckr_pat_%u24+",              // Docker
    "doo_v1_%h64",                 // DigitalOcean
    "dop_v1_%h64",                 // DigitalOcean
    "dor_v1_%h64",                 // DigitalOcean
    "dp.ct.%w40+",                 // Doppler
    "dp.pt.%w40+",                 // Doppler
    "dp.st.%t40+",                 // Doppler
    "dt0c01.%U24.%U64",            // Dynatrace
    "duffel_live_%u43",            // Duffel
    "duffel_test_%u43",            // Duffel
    "e2b_%h40",                    // E2B
    "figd_%u40+",                  // Figma
    "fio-u-%u64",                  // Frame.io
    "fm1r_%b40+",                  // Fly.io
    "fo1_%u43",                    // Fly.io
    "gh%l1_%w36",                  // GitHub
    "github_pat_%w22_%w59",        // GitHub
    "glagent-%u50",                // GitLab
    "glc_eyJ%b40+",                // Grafana Cloud
    "glcbt-%u20+",                 // GitLab
    "gldt-%u20",                   // GitLab
    "glft-%u20",                   // GitLab
    "glpat-%t20+",                 // GitLab
    "glptt-%h40",                  // GitLab
    "glrt-%t20+",                  // GitLab
    "glsa_%w32_%h8",               // Grafana
    "glsoat-%u20",                 // GitLab
    "gsk_%w52",                    // Groq
    "hf_%w34",                     // Hugging Face
    "hvb.%u24+",                   // Vault, batches
    "hvs.%u24+",                   // Vault
    "jina_%u60+",                  // Jina
    "key-%h32",                    // Mailgun
    "lin_api_%w40",                // Linear
    "lin_oauth_%h64",              // Linear
    "lsv2_pt_%h32_%h10",           // LangSmith
    "lsv2_sk_%h32_%h10",           // LangSmith
    "nfp_%w36+",                   // Netlify
    "npm_%w36",                    // npm
    "ntn_%w40+",                   // Notion
    "nvapi-%u60+",                 // NVIDIA
    "ops_eyJ%u100+",               // 1Password, services
    "oy2%l43",                     // NuGet
    "pat%w14.%h64",                // Airtable
    "pcsk_%u40+",                  // Pinecone
    "phc_%w40+",                   // PostHog
    "phx_%w40+",                   // PostHog
    "pk.eyJ%u50+.%u20+",           // Mapbox
    "pnb_%l36",                    // Prefect
    "pnu_%l36",                    // Prefect
    "pplx-%w48",                   // Perplexity
    "pscale_oauth_%u32+",          // PlanetScale
    "pscale_pw_%u32+",             // PlanetScale
    "pscale_tkn_%u32+",            // PlanetScale
    "pul-%h40",                    // Pulumi
    "pypi-AgE%u50+",               // PyPI: a macaroon in base64
    "r8_%w37",                     // Replicate
    "rdme_%l70",                   // ReadMe
    "rk_live_%w16+",               // Stripe
    "rk_test_%w16+",               // Stripe
    "rnd_%w28+",                   // Render
    "rubygems_%h48",               // RubyGems
    "rzp_live_%w14",               // Razorpay
    "rzp_test_%w14",               // Razorpay
    "sb_secret_%u30+",             // Supabase
    "sbp_%h40",                    // Supabase
    "sdk-%h8-%h4-%h4-%h4-%h12",    // LaunchDarkly
    "secret_%w43",                 // Notion
    "sgp_%h40",                    // Sourcegraph
    "shippo_live_%h40",            // Shippo
    "shippo_test_%h40",            // Shippo
    "shpat_%h32",                  // Shopify
    "shpca_%h32",                  // Shopify
    "shppa_%h32",                  // Shopify
    "shpss_%h32",                  // Shopify
    "sk-ant-%u32+",                // Anthropic
    "sk-or-v1-%h64",               // OpenRouter
    "sk-proj-%u40+",               // OpenAI
    "sk.eyJ%u50+.%u20+",           // Mapbox
    "sk_live_%w16+",               // Stripe
    "sk_test_%w16+",               // Stripe
    "sl.%u130+",                   // Dropbox
    "sntrys_eyJ%b50+_%u40+",       // Sentry, organizations
    "sntryu_%h64",                 // Sentry
    "sq0atp-%u22",                 // Square
    "sq0csp-%u43",                 // Square
    "sqa_%h40",                    // SonarQube
    "sqp_%h40",                    // SonarQube
    "squ_%h40",                    // SonarQube
    "tfp_%u44_%w14",               // Typeform
    "tskey-%l3+-%w8+",             // Tailscale
    "tskey-%l4+-%w8+-%w20+",       // Tailscale
    "tvly-%u30+",                  // Tavily
    "xai-%w70+",                   // xAI
    "xapp-%d1-%U9+-%d10+-%h64",    // Slack
    "xkeysib-%h64-%w16",           // Brevo
    "xoxb-%d10+-%d10+-%w24",       // Slack
    "xoxe.xoxp-%t40+",             // Slack
    "xoxp-%d10+-%d10+-%d10+-%h32", // Slack
    "ya29.%u50+",                  // Google
};

using Alphabet = std::bitset<256>;

Alphabet alphabetOf(char name) {
    Alphabet alphabet;
    for (std::size_t byte = 0; byte < 128; ++byte) {
        auto const c = static_cast<char>(byte);
        bool const isToken = isAlphanumeric(c) || isAnyOf(c, "-_");
        switch (name) {
        case 'd': alphabet[byte] = isDigit(c); break;
        case 'h': alphabet[byte] = isHexDigit(c); break;
        case 'l': alphabet[byte] = isLower(c) || isDigit(c); break;
        case 'U': alphabet[byte] = isUpper(c) || isDigit(c); break;
        case 'w': alphabet[byte] = isAlphanumeric(c); break;
        case 'u': alphabet[byte] = isToken; break;
        case 'b': alphabet[byte] = isAlphanumeric(c) || isAnyOf(c, "+/="); break;
        case 'c': alphabet[byte] = isAlphanumeric(c) || isAnyOf(c, "./=,"); break;
        default: alphabet[byte] = isToken || isAnyOf(c, ".=~+/"); break;
        }
    }
    return alphabet;
}

/// A letter of a format, a run of its, or where the secret begins.
struct Piece {
    char letter = 0;
    bool beginsSecret = false;
    Alphabet alphabet; // of a run
    std::size_t count = 0;
    bool mayBeLonger = false;
};

using Format = std::vector<Piece>;

Format parsed(std::string_view text) {
    Format format;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            format.push_back({.letter = lookAlike(text[i])});
            continue;
        }
        if (text[i + 1] == '<') {
            format.push_back({.beginsSecret = true});
            ++i;
            continue;
        }
        Piece piece{.alphabet = alphabetOf(text[++i])};
        while (i + 1 < text.size() && isDigit(text[i + 1])) piece.count = piece.count * 10 + (text[++i] - '0');
        piece.mayBeLonger = i + 1 < text.size() && text[i + 1] == '+';
        if (piece.mayBeLonger) ++i;
        format.push_back(piece);
    }
    return format;
}

/// The formats by the letter they begin with; those that begin with a run by 0.
struct Index {
    std::array<std::vector<Format>, 128> byLetter;

    Index() {
        for (auto const text : formats) {
            auto format = parsed(text);
            byLetter[static_cast<unsigned char>(format[0].letter)].push_back(std::move(format));
        }
    }
};

struct Key {
    std::size_t start = 0;
    std::size_t end = 0;
};

/// What has the format from `at` on.
std::optional<Key> keyAt(Format const& format, std::string_view text, std::size_t at) {
    Key key{at, at};
    for (auto const& piece : format) {
        if (piece.beginsSecret) {
            key.start = at;
        } else if (piece.letter) {
            if (at == text.size() || lookAlike(text[at++]) != piece.letter) return std::nullopt;
        } else {
            auto const limit = piece.mayBeLonger ? text.size() : std::min(text.size(), at + piece.count);
            auto const start = at;
            while (at < limit && piece.alphabet[static_cast<unsigned char>(text[at])]) ++at;
            if (at - start < piece.count) return std::nullopt;
        }
    }
    key.end = at;
    bool const goesOn = at < text.size() && isAlphanumeric(text[at]);
    return goesOn ? std::nullopt : std::optional(key);
}

/// "xxxx…", "your-key-goes-here": of few letters, or of words.
bool isMadeUp(std::string_view key) {
    constexpr std::size_t fewest = 6; // different bytes in the second half of a key
    auto const half = key.substr(key.size() / 2);
    std::bitset<256> seen;
    for (char const c : half) seen.set(static_cast<unsigned char>(c));
    bool const hasDigit = std::any_of(key.begin(), key.end(), isDigit);
    bool const hasCases =
        std::any_of(half.begin(), half.end(), isUpper) && std::any_of(half.begin(), half.end(), isLower);
    return seen.count() < fewest || !(hasDigit || hasCases);
}

}

std::span<std::string_view const> keyFormats() { return formats; }

void forEachFormattedKey(std::string_view text, std::function<void(std::size_t, std::size_t)> const& found) {
    static Index const index;
    constexpr std::size_t shortest = 15;
    std::size_t endOfRun = 0; // of what has no blank in it
    for (std::size_t i = 0; i + shortest <= text.size();) {
        if (i >= endOfRun) endOfRun = std::min(text.find(' ', i), text.size());
        if (endOfRun - i < shortest) {
            i = endOfRun + 1;
            continue;
        }
        bool const begins = i == 0 || !isAlphanumeric(text[i - 1]);
        if (!begins || isBeyondASCII(text[i])) {
            ++i;
            continue;
        }
        Key longest{i, i + 1};
        auto const search = [&](std::vector<Format> const& formats) {
            for (auto const& format : formats) {
                auto const key = keyAt(format, text, i);
                if (key && key->end > longest.end && !isMadeUp(text.substr(i, key->end - i))) longest = *key;
            }
        };
        search(index.byLetter[static_cast<unsigned char>(lookAlike(text[i]))]);
        if (isAlphanumeric(text[i])) search(index.byLetter[0]);
        if (longest.end > i + 1) found(longest.start, longest.end);
        i = longest.end;
    }
}

}
