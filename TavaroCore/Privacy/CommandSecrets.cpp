#include <TavaroCore/Privacy/Private/CommandSecrets.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace tavaro {

namespace {

/// Where a command has its password.
enum class Place {
    value,        // the argument behind the flag
    afterColon,   // "user:password" behind the flag
    afterComma,   // "user,password"
    afterPercent, // "user%password"
    joined,       // the rest of the argument that begins with the flag
};

struct Flag {
    std::string_view command; // how a word of the line begins
    std::string_view flag;
    Place place = Place::value;
};

// From the commands' manuals.
constexpr Flag flags[] = {
    {"7z", "-p", Place::joined},
    {"az", "-p", Place::value},
    {"buildah login", "-p", Place::value},
    {"codecov", "-t", Place::value},
    {"curl", "--proxy-user", Place::afterColon},
    {"curl", "--user", Place::afterColon},
    {"curl", "-U", Place::afterColon},
    {"curl", "-u", Place::afterColon},
    {"docker login", "-p", Place::value},
    {"doctl", "-t", Place::value},
    {"helm registry login", "-p", Place::value},
    {"http", "-a", Place::afterColon},
    {"influx", "-t", Place::value},
    {"ipmitool", "-P", Place::value},
    {"ldap", "-w", Place::value},
    {"lftp", "-u", Place::afterComma},
    {"mongo", "-p", Place::value},
    {"mosquitto", "-P", Place::value},
    {"mysql", "-p", Place::joined},
    {"mariadb", "-p", Place::joined},
    {"nerdctl login", "-p", Place::value},
    {"npm", "_authToken", Place::value},
    {"oc login", "-p", Place::value},
    {"openssl", "-k", Place::value},
    {"podman login", "-p", Place::value},
    {"rar", "-p", Place::joined},
    {"redis-cli", "-a", Place::value},
    {"rpcclient", "-U", Place::afterPercent},
    {"skopeo login", "-p", Place::value},
    {"smbclient", "-U", Place::afterPercent},
    {"smbmap", "-p", Place::value},
    {"snmpwalk", "-c", Place::value},
    {"sqlcmd", "-P", Place::value},
    {"sshpass", "-p", Place::value},
    {"sshpass", "-p", Place::joined},
    {"twine", "-p", Place::value},
    {"unrar", "-p", Place::joined},
    {"unzip", "-P", Place::value},
    {"wget", "--user", Place::afterColon},
    {"xfreerdp", "/p:", Place::joined},
    {"zip", "-P", Place::value},
};

/// A word as a shell divides a line, without its quotes.
struct Argument {
    std::size_t start = 0;
    std::size_t end = 0;
    bool isQuoted = false;
};

std::vector<Argument> argumentsOf(std::string_view text) {
    std::vector<Argument> arguments;
    for (auto i = pastBlanks(text, 0); i < text.size(); i = pastBlanks(text, i)) {
        if (isAnyOf(text[i], "\"'")) {
            auto const close = text.find(text[i], i + 1);
            if (close != text.npos) {
                arguments.push_back({i + 1, close, true});
                i = close + 1;
                continue;
            }
        }
        auto const start = i;
        while (i < text.size() && !isBlank(text[i])) {
            auto const close = isAnyOf(text[i], "\"'") ? text.find(text[i], i + 1) : text.npos; // -p'two words'
            i = close == text.npos ? i + 1 : close + 1;
        }
        arguments.push_back({start, i, false});
    }
    return arguments;
}

class CommandReader {
public:
    using Found = std::function<void(std::size_t, std::size_t)>;
    CommandReader(LineFacts const& facts, Found const& found) : facts_(facts), text_(facts.line()), found_(found) {}

    void read() {
        if (hasAny({" -", "--", "/p:", "_authToken"})) readFlags();
        if (has("pass:")) readAfter("pass:");
        if (has("sudo -S") || has("chpasswd") || has("-stdin")) readEcho();
        readWords();
        if (has("WIFI:")) readWiFi();
        if (has("auth") || has("hash(") || has("login(") || has("sign(") || has("PASS")) readCalls();
    }

private:
    bool has(std::string_view piece) const { return facts_.has(piece); }
    bool hasAny(std::initializer_list<std::string_view> pieces) const {
        return std::any_of(pieces.begin(), pieces.end(), [&](auto piece) { return has(piece); });
    }

    void report(std::size_t start, std::size_t end) {
        constexpr std::size_t shortest = 4;
        if (start < end && isAnyOf(text_[start], "\"'")) {
            ++start;
            if (end > start && text_[end - 1] == text_[start - 1]) --end;
        }
        while (end > start && isAnyOf(text_[end - 1], ";)")) --end;
        auto const value = text_.substr(start, end - start);
        if (value.size() < shortest || SensitiveText::isPlaceholder(value) || SensitiveText::isCommonWord(value) ||
            isAnyOf(value[0], "-/$<{|"))
            return;
        if (SensitiveText::isName(value) && SensitiveText::isNameOfSecret(value)) return;
        found_(start, end);
    }

    /// Whether a word of the line begins with the command, as in "/usr/bin/mysqldump".
    bool isCalled(std::string_view command) const {
        if (!has(command)) return false;
        for (auto at = text_.find(command); at != text_.npos; at = text_.find(command, at + 1)) {
            if (at == 0 || isAnyOf(text_[at - 1], " \t/|;&(`$")) return true;
        }
        return false;
    }

    void readFlags() {
        std::optional<std::vector<Argument>> arguments;
        std::string_view last;
        bool isLastCalled = false;
        for (auto const& flag : flags) {
            if (!has(flag.flag)) continue;
            if (flag.command != last) isLastCalled = isCalled(flag.command);
            last = flag.command;
            if (!isLastCalled) continue;
            if (!arguments) arguments = argumentsOf(text_);
            readFlag(flag, *arguments);
        }
    }

    void readFlag(Flag const& flag, std::vector<Argument> const& arguments) {
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            auto const [start, end, isQuoted] = arguments[i];
            auto const argument = text_.substr(start, end - start);
            if (flag.place == Place::joined) {
                if (argument.starts_with(flag.flag) && !isQuoted) reportJoined(flag, start, end);
            } else if (i + 1 < arguments.size() && argument.ends_with(flag.flag) &&
                       (argument == flag.flag || flag.flag[0] == '_')) {
                reportPlace(flag.place, arguments[i + 1]);
            }
        }
    }

    /// "-port", "-print", "-p80:80": other flags, and where containers listen.
    void reportJoined(Flag const& flag, std::size_t start, std::size_t end) {
        auto const value = text_.substr(start + flag.flag.size(), end - start - flag.flag.size());
        bool const isPlain = std::all_of(value.begin(), value.end(), isLower);
        if (value.starts_with("ort") || value.starts_with("assword") || value.starts_with("rotocol") ||
            value.starts_with("=")) {
            return;
        }
        constexpr std::size_t shortestPlain = 5;
        if (!isPlain || value.size() >= shortestPlain) report(start + flag.flag.size(), end);
    }

    void reportPlace(Place place, Argument const& argument) {
        if (place == Place::value) return report(argument.start, argument.end);
        char const sign = place == Place::afterColon ? ':' : place == Place::afterComma ? ',' : '%';
        auto const at = text_.find(sign, argument.start);
        if (at < argument.end) report(at + 1, argument.end);
    }

    void readAfter(std::string_view mark) {
        auto const at = text_.find(mark);
        bool const isFlag = at > 0 && isBlank(text_[at - 1]) && has("-pass");
        if (isFlag) report(at + mark.size(), std::min(text_.find(' ', at), text_.size()));
    }

    /// echo 'x' | sudo -S …, echo "user:x" | chpasswd, echo x | docker login --password-stdin
    void readEcho() {
        auto const arguments = argumentsOf(text_);
        for (std::size_t i = 0; i + 2 < arguments.size(); ++i) {
            auto const word = text_.substr(arguments[i].start, arguments[i].end - arguments[i].start);
            if (word != "echo" && word != "printf") continue;
            auto const [start, end, isQuoted] = arguments[i + 1];
            auto const colon = has("chpasswd") ? text_.find(':', start) : text_.npos;
            return report(colon < end ? colon + 1 : start, end);
        }
    }

    struct Phrase {
        std::string_view words; // in front of the secret
        bool isQuoted = false;
        int skipped = 0; // arguments between
    };

    /// Words whose next one is a password.
    void readWords() {
        static constexpr Phrase phrases[] = {
            {"IDENTIFIED BY ", true},
            {"identified by ", true},
            {"PASSWORD ", true},
            {"PASSWORD = N", true},
            {"IDENTIFIED WITH mysql_native_password BY ", true},
            {"> AUTH "},
            {"vault login "},
            {"wpa_passphrase ", false, 1},
            {"mysqladmin -u root password "},
            {"net use ", false, 2},
            {"aws configure set aws_secret_access_key "},
            {"htpasswd -b ", false, 2},
            {"htpasswd -cb ", false, 2},
            {"htpasswd -bc ", false, 2},
            {"plain-text-password "},
            {"snmp-server community "},
            {"password 0 "},
            {"password 7 "},
            {"secret 5 "},
            {"secret 0 "},
            {"requirepass "},
            {"masterauth "},
            {"SECRET ", true},
            {"KEY_ID ", true},
            {"SET PASSWORD = ", true},
            {"ConvertTo-SecureString ", true},
            {"ConvertTo-SecureString -String ", true},
        };
        for (auto const& phrase : phrases) {
            if (!has(phrase.words)) continue;
            auto const at = text_.find(phrase.words);
            if ((at > 0 && isLetter(text_[at - 1]))) continue;
            readPhrase(phrase, at + phrase.words.size());
        }
        if (has("jdbc:oracle:thin:")) readOracle();
        if (has("SET PASSWORD FOR ") && has("= '")) readQuoted(text_.find("= '") + 2);
        readBasicPair();
        readPasswordLine();
    }

    void readPhrase(Phrase const& phrase, std::size_t start) {
        auto const rest = text_.substr(start);
        auto const arguments = argumentsOf(rest);
        auto const which = static_cast<std::size_t>(phrase.skipped);
        if (arguments.size() <= which) return;
        auto argument = arguments[which];
        if (phrase.words == "wpa_passphrase ") argument.end = rest.size();
        if (phrase.words == "net use ") argument = arguments.back();
        auto const value = rest.substr(argument.start, argument.end - argument.start);
        if (phrase.isQuoted && !isAnyOf(rest[0], "'\"")) return;
        if (phrase.isQuoted) argument.end = std::min(rest.find(rest[0], 1), rest.size());
        if (!argument.isQuoted && value.find_first_of("()=<>") != value.npos) return;
        report(start + argument.start, start + argument.end);
    }

    void readQuoted(std::size_t quote) {
        auto const close = text_.find(text_[quote], quote + 1);
        if (close != text_.npos) report(quote, close + 1);
    }

    /// scott/tiger@…
    void readOracle() {
        auto const slash = text_.find('/', text_.find("jdbc:oracle:thin:"));
        auto const at = slash == text_.npos ? text_.npos : text_.find('@', slash);
        if (at != text_.npos) report(slash + 1, at);
    }

    /// "credentials: maria/Kuckuck7": a folder's name has hardly a digit and a capital.
    void reportBehindSlash(std::size_t pair, std::size_t end) {
        auto const slash = text_.find('/', pair);
        if (slash >= end || slash == pair || text_.substr(slash + 1, end - slash - 1).find('/') != text_.npos) return;
        auto const value = text_.substr(slash + 1, end - slash - 1);
        bool const isMixed =
            std::any_of(value.begin(), value.end(), isDigit) && std::any_of(value.begin(), value.end(), isUpper);
        if (isMixed) report(slash + 1, end);
    }

    /// "Basic auth: maria:x", "Admin login: root / x", "login is maria@… / x"
    void readBasicPair() {
        for (std::string_view const label :
             {"Basic auth: ", "basic auth: ", "login: ", "Login: ", "login is ",
              "Zugangsdaten: ", "Zugang: ", "credentials: ", "Credentials: ", "Accès : "}) {
            if (!has(label)) continue;
            auto const at = text_.find(label);
            auto const pair = at + label.size();
            auto const end = text_.find(' ', pair);
            auto const slash = text_.find(" / ", pair);
            if (slash != text_.npos && slash == end) {
                report(slash + 3, std::min(text_.find(' ', slash + 3), text_.size()));
            } else if (auto const colon = text_.find(':', pair); colon < std::min(end, text_.size())) {
                report(colon + 1, std::min(end, text_.size()));
            } else {
                reportBehindSlash(pair, std::min(end, text_.size()));
            }
        }
    }

    /// The file of passwords of a database: host:port:database:user:x
    void readPasswordLine() {
        std::array<std::size_t, 4> colons{};
        std::size_t count = 0;
        for (std::size_t i = 0; i < text_.size(); ++i) {
            if (isBlank(text_[i])) return;
            if (text_[i] != ':') continue;
            if (count == colons.size()) return;
            colons[count++] = i;
        }
        if (count != colons.size()) return;
        auto const port = text_.substr(colons[0] + 1, colons[1] - colons[0] - 1);
        bool const isPort = port == "*" || (port.size() >= 4 && std::all_of(port.begin(), port.end(), isDigit));
        if (isPort && isLetter(text_[colons[2] + 1])) report(colons[3] + 1, text_.size());
    }

    /// The text of a network's QR code.
    void readWiFi() {
        auto const at = text_.find(";P:", text_.find("WIFI:"));
        if (at != text_.npos) report(at + 3, std::min(text_.find(';', at + 3), text_.size()));
    }

    /// auth=("maria", "x"), hash("x", …), login("maria", "x"), USER_PASS = ("maria", "x")
    void readCalls() {
        struct Call {
            std::string_view words;
            int argument = 0;
        };
        static constexpr Call calls[] = {{"auth=(", 1},       {"auth = (", 1},  {"auth('", 1},
                                         {"bcrypt.hash(", 0}, {".login(", 1},   {"jwt.sign(", 1},
                                         {"BasicAuth(", 1},   {"_PASS = (", 1}, {"_auth(", 1}};
        for (auto const& call : calls) {
            if (!has(call.words)) continue;
            auto const at = text_.find(call.words);
            auto start = at + call.words.size() - (call.words.ends_with('\'') ? 1 : 0);
            for (int i = 0; i < call.argument && start < text_.size(); ++i) {
                auto const comma = text_.find(',', start);
                start = comma == text_.npos ? text_.size() : pastBlanks(text_, comma + 1);
            }
            if (start < text_.size() && isAnyOf(text_[start], "\"'")) readQuoted(start);
        }
    }

    LineFacts const& facts_;
    std::string_view text_;
    Found const& found_;
};

}

void forEachCommandSecret(LineFacts const& facts, std::function<void(std::size_t, std::size_t)> const& found) {
    CommandReader(facts, found).read();
}

}
