#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Tests of pieces of text: could this be something that nobody should see? Texts are UTF-8.
namespace tavaro::SensitiveText {

/// Whether the digits of the text, of which there are at least two, end with the check digit of card numbers (ISO/IEC
/// 7812-1). Characters that are not digits are passed over.
bool luhn(std::string_view text);

/// Shannon entropy of the bytes, in bits a byte: 0 for one repeated, about 3.9 for hexadecimal keys, up to 6 for
/// base64.
double entropy(std::string_view text);

/// Whether a token looks made by a machine rather than written: long, of high entropy, and changing between letters,
/// digits and cases more often than words do. Dotted identifiers never do, nor do UUIDs.
bool looksRandom(std::string_view text);

/// Whether the text can be a secret's value, for labels that are followed by other things too: not a placeholder
/// ("<your key>", "****", "${TOKEN}"), a piece of code, a type or a common word.
bool looksLikeValue(std::string_view text);

/// "public", "changeme", "true": what follows labels in code, documentation and forms.
bool isCommonWord(std::string_view text);

/// Placeholders, masks and references to a value kept elsewhere.
bool isPlaceholder(std::string_view text);

/// "accessToken", "MAPS_KEY": letters that make words, as names in code do.
bool isName(std::string_view text);

/// "newPassword", "user_token": a name for a secret rather than one.
bool isNameOfSecret(std::string_view text);

/// "app.config.token": identifiers joined by dots.
bool isDottedIdentifier(std::string_view text);

/// Nothing but hexadecimal digits and hyphens, with at least one of these: a UUID, a range of addresses.
bool isHexWithHyphens(std::string_view text);

/// The text with what text recognition confuses made one: compatibility forms and case folded, dashes and quotes
/// plain, 1 I l | one letter, 0 and O one, white space runs one blank.
std::string foldLookAlikes(std::string_view text);

/// Bytes of the first piece of a text, which is not empty, that folds by itself: a character with the marks that join
/// it. At most 32 characters, so that floods of marks cost no more than other text.
std::size_t lengthOfFirstPiece(std::string_view text);

/// Whether the text ends with a label that a secret's value follows, such as "Secret access key" or "token:".
bool isSecretLabel(std::string_view text);

}
