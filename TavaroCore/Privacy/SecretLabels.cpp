#include <TavaroCore/Privacy/Private/SecretLabels.h>

#include <TavaroCore/Privacy/Characters.h>
#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <functional>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace tavaro {

namespace {

// What people write before secrets, in English, German, French, Spanish, Italian, Portuguese, Dutch, Polish, Czech,
// Hungarian, Turkish, the Nordic languages, Greek, Russian, and what configuration files have.
constexpr std::string_view passwords = R"(
adgangskode, bind pw, bindpw, contrasena, contrasenya, contraseña, dbpass, dbpasswd, dbpassword, dbpw, geslo, haslo,
hasło, heslo, jelszava, jelszo, jelszó, kennwort, kodeord, losenord, lozinka, lösenord, masterauth,
masteruser password, mdp, mot de passe, mysql pwd, mật khẩu, palavra passe, paraula de pas, parol, parola,
parola chiave, parola d ordine, parole, pass, pass word, passcode, passord, passwd, password, passwords, passwort,
paswoord, pgpassword, pre shared key, preshared key, psk, pw, pwd, requirepass, rootpw, rpcpassword, salasana, sandi,
senha, sifre, smtppass, userpass, userpw, wachtwoord, wifi key, wlan schlüssel, wpa passphrase, zugangscode,
şifre, κωδικός, парола, пароль, пароля, סיסמה, كلمة المرور, รหัสผ่าน
)";

constexpr std::string_view phrases = R"(
bip39, frase de contraseña, frase segreta, mnemonic, mnemonic phrase, pass phrase, passphrase, passphrasen, passsatz,
phrase de passe, phrase secrète, recovery phrase, secret phrase, seed phrase, seed words, 助记词
)";

constexpr std::string_view secrets = R"(
access key, access token, accesskey, accesstoken, account key, accountkey, amz signature, api geheimnis, api key,
api keys, api klucz, api schlussel, api schlüssel, api secret, api sleutel, api token, api キー, apikey, apisecret,
apitoken, app key, app secret, auth key, auth token, authkey, authorization api key, authorization apikey,
authorization basic, authorization digest response, authorization key, authorization token, authtoken, bearer token,
bitlocker recovery key, chave api, chave de acesso, chave de api, chave secreta, chiave api, chiave di accesso,
chiave segreta, clave api, clave de acceso, clave de api, clave secreta, client secret, clientsecret, clé api,
clé d accès, clé d api, clé privée, clé secrète, connect sid, consumer secret, credential, credentials, csrf token,
csrftoken, dd api key, deploy key, deploy token, dockerconfigjson, enable secret, encryption key, geheime sleutel,
geheimer schlüssel, geheimnis, geheimschlüssel, hemlig nyckel, id token, jeton, jeton d accès, jsessionid, jwt secret,
klucz api, klucz prywatny, klucz tajny, licence key, license key, lizenzschlüssel, master key, personal access token,
phpsessid, private key, privatekey, privater schlüssel, product key, recovery code, recovery codes, recovery key,
refresh token, refreshtoken, registry auth, root token, secret, secret access key, secret base, secret key,
secretaccesskey, secretkey, security token, server community, session id, session key, session token, sessionid,
shared access key, shared secret, sharedaccesskey, signing key, signing secret, snmp community, ssl key, storage key,
subscription key, tajny klucz, tls key, toegangssleutel, token, token d accès, token de acceso, token di accesso,
totp secret, unseal key, vault token, webhook secret, wiederherstellungscode, wiederherstellungsschlüssel, x api key,
x auth token, xsrf token, zugangsdaten, zugangstoken, zugriffsschlüssel, zugriffstoken, ключ api, секрет,
секретный ключ, токен, アクセス キー
)";

constexpr std::string_view weak = R"(
auth, chave, chiave, clave, clé, key, klucz, network key, primary key, psk key, schlüssel, secondary key, session,
sid, sleutel, wep key, wpa key, ключ
)";

constexpr std::string_view codes = R"(
2fa code, access code, auth code, authentication code, backup code, backup codes, bestätigungscode, bevestigingscode, code de confirmation,
code de vérification, code pin, codice di verifica, confirmation code, cvc, cvc2, cvv, cvv2, código de verificación,
código de verificação, door code, einmalcode, enter code, gate code, einmalpasswort, kod weryfikacyjny, login code, mfa code, one time code,
one time password, otp, pairing code, passcode, pin, pin code, security code, sicherheitscode, sms code, tan, unlock code, use code,
verification code, verifizierungscode, your code, код подтверждения
)";

/// What East Asian labels contain; particles may follow.
struct EastAsian {
    std::string_view text;
    LabelKind kind;
};
constexpr EastAsian eastAsian[] = {
    {"パスワード", LabelKind::password}, {"暗証番号", LabelKind::code},   {"密码", LabelKind::password},
    {"密碼", LabelKind::password},       {"口令", LabelKind::password},   {"密钥", LabelKind::secret},
    {"密鑰", LabelKind::secret},         {"令牌", LabelKind::secret},     {"비밀번호", LabelKind::password},
    {"암호", LabelKind::password},       {"トークン", LabelKind::secret}, {"シークレット", LabelKind::secret},
    {"秘密鍵", LabelKind::secret},       {"验证码", LabelKind::code},     {"認証コード", LabelKind::code},
    {"인증번호", LabelKind::code},       {"토큰", LabelKind::secret},
};

/// "Datenbankpasswort", "WLANKennwort": compounds end with these.
constexpr std::string_view stems[] = {"kennwort",   "losenord",   "password", "passwort",   "passwd",
                                      "wachtwoord", "passphrase", "salasana", "adgangskode"};

constexpr std::string_view properties = R"(
age, alg, algorithm, attempts, bucket, cert, changed, charset, checksum, class, cli, cmd, column, command, count,
created, dialog, digest, dir, directory, enabled, encoder, encoding, endpoint, env, error, event, exp, expiration,
expire, expires, expiry, factory, field, file, filename, fingerprint, folder, form, format, func, function, handler,
hash, hashed, hashing, header, help, hint, icon, identity, index, info, input, interval, issuer, iterations, kind,
label, len, length, level, lifetime, limit, link, list, location, manager, max, message, min, minimum, mode, msg,
name, names, option, options, page, param, parameter, path, pattern, placeholder, policy, position, prefix, prompt,
protection, provider, ref, regex, required, requirements, reset, response, rotation, rules, scope, section, service,
settings, size, source, state, status, storage, store, strength, suffix, text, timeout, title, ttl, type, types,
updated, uri, url, usage, valid, validator, version, view, visible, width
)";

/// The entries of a table.
template<class Visit> void forEachOf(std::string_view table, Visit const& visit) {
    while (!table.empty()) {
        auto const end = std::min(table.find_first_of(",\n"), table.size());
        auto entry = table.substr(0, end);
        while (entry.starts_with(' ')) entry.remove_prefix(1);
        if (!entry.empty()) visit(entry);
        table.remove_prefix(std::min(end + 1, table.size()));
    }
}

constexpr std::size_t longestWord = 40; // bytes

/// The form in which words are looked up, made without memory of its own where it is of ASCII.
class FoldedWord {
public:
    explicit FoldedWord(std::string_view word) {
        if (word.size() > longestWord || std::any_of(word.begin(), word.end(), isBeyondASCII)) {
            long_ = SensitiveText::foldLookAlikes(word);
            text_ = long_;
            return;
        }
        for (std::size_t i = 0; i < word.size(); ++i) short_[i] = lookAlike(lower(word[i]));
        text_ = {short_.data(), word.size()};
    }
    FoldedWord(FoldedWord const&) = delete;
    FoldedWord& operator=(FoldedWord const&) = delete;
    std::string_view text() const { return text_; }

private:
    std::array<char, longestWord> short_;
    std::string long_;
    std::string_view text_;
};

struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};
using Texts = std::unordered_set<std::string, TextHash, std::equal_to<>>;

std::size_t beginningOf(std::string_view folded) {
    auto const byte = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(folded[i])); };
    return byte(0) << 8 | byte(1);
}

/// Labels by their folded words, a blank between them.
struct Dictionary {
    std::unordered_map<std::string, LabelKind> labels;
    Texts firstWords;
    Texts properties;
    std::bitset<65536> beginnings; // the first two bytes of first words

    Dictionary() {
        forEachOf(weak, [&](auto label) { add(label, LabelKind::weak); });
        forEachOf(codes, [&](auto label) { add(label, LabelKind::code); });
        forEachOf(secrets, [&](auto label) { add(label, LabelKind::secret); });
        forEachOf(phrases, [&](auto label) { add(label, LabelKind::phrase); });
        forEachOf(passwords, [&](auto label) { add(label, LabelKind::password); });
        forEachOf(tavaro::properties, [&](auto word) { properties.insert(std::string(FoldedWord(word).text())); });
    }

    void add(std::string_view label, LabelKind kind) {
        auto const text = SensitiveText::foldLookAlikes(label);
        labels[text] = kind;
        firstWords.insert(text.substr(0, text.find(' ')));
        beginnings.set(beginningOf(text));
    }
};

Dictionary const& dictionary() {
    static Dictionary const dictionary;
    return dictionary;
}

/// "api key", "api_key", "d'accès", "Authorization: Basic"
bool mayJoin(std::string_view text, Word const& word, Word const& next) {
    auto const between = text.substr(word.end, next.start - word.end);
    return between.empty() || between == ": " || (between.size() == 1 && isAnyOf(between[0], " \t-_.'/"));
}

std::optional<LabelKind> eastAsianLabel(std::string_view word) {
    if (static_cast<unsigned char>(word[0]) < 0xE3) return std::nullopt;
    for (auto const& [text, kind] : eastAsian) {
        if (word.find(text) != word.npos) return kind;
    }
    return std::nullopt;
}

bool endsWithStem(std::string_view word) {
    return std::any_of(std::begin(stems), std::end(stems),
                       [&](auto stem) { return word.size() > stem.size() && word.ends_with(stem); });
}

constexpr std::size_t mostWords = 4;

std::string_view textOf(std::string_view text, Word const& word) {
    return text.substr(word.start, word.end - word.start);
}

/// The longest label of `begun`, folded, and of what the words from `end` on add to it.
std::optional<SecretLabel> labelFrom(std::string_view text, std::span<Word const> words, std::size_t first,
                                     std::size_t end, std::string_view begun) {
    auto const& known = dictionary();
    if (!known.beginnings[beginningOf(begun)] || !known.firstWords.contains(begun)) return std::nullopt;
    std::string joined(begun);
    std::optional<SecretLabel> longest;
    for (;; ++end) {
        if (auto const label = known.labels.find(joined); label != known.labels.end()) {
            longest = {label->second, first, end};
        }
        if (end == words.size() || end - first == mostWords || !mayJoin(text, words[end - 1], words[end])) break;
        joined += ' ';
        joined += FoldedWord(textOf(text, words[end])).text();
    }
    return longest;
}

/// "APIkey", "DBpassword", "APl key": of capitals before small letters the last seems to begin a word.
std::optional<SecretLabel> gluedLabel(std::string_view text, std::span<Word const> words, std::size_t first) {
    if (first + 1 >= words.size()) return std::nullopt;
    auto const &word = words[first], &next = words[first + 1];
    auto const glued = text.substr(word.start, next.end - word.start);
    bool const isGlued = word.end == next.start && isUpper(text[word.start]) && isUpper(text[word.end - 1]);
    if (!isGlued || glued.size() > longestWord) return std::nullopt;
    return labelFrom(text, words, first, first + 2, FoldedWord(glued).text());
}

}

std::optional<SecretLabel> labelAt(std::string_view text, std::span<Word const> words, std::size_t first) {
    constexpr std::size_t shortestCompound = 9;
    if (auto const label = gluedLabel(text, words, first)) return label;
    auto const word = textOf(text, words[first]);
    if (word.size() < 2 || word.size() > longestWord) return std::nullopt;
    if (auto const kind = eastAsianLabel(word)) return SecretLabel{*kind, first, first + 1};
    FoldedWord const folded(word);
    if (dictionary().firstWords.contains(folded.text())) return labelFrom(text, words, first, first + 1, folded.text());
    if (word.size() < shortestCompound || !endsWithStem(folded.text())) return std::nullopt;
    return SecretLabel{LabelKind::password, first, first + 1};
}

bool namesProperty(std::string_view word) { return dictionary().properties.contains(FoldedWord(word).text()); }

bool isCopula(std::string_view word) {
    constexpr std::string_view copulas[] = {"is", "lautet", "ist", "est", "es", "è", "é", "jest"};
    return std::find(std::begin(copulas), std::end(copulas), word) != std::end(copulas);
}

}
