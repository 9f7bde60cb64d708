#include <Tavaro/Studio/Inspectors/FieldRows.h>

#include <array>

namespace tavaro {

std::string choiceLabel(std::string_view name) {
    static constexpr std::array<std::pair<std::string_view, std::string_view>, 2> known{
        {{"apiKey", "API Key"}, {"email", "E-Mail Address"}}};
    for (auto const& [each, label] : known) {
        if (each == name) return std::string(label);
    }
    return inWords(name);
}

QString inSentence(std::string_view label) {
    auto words = toQString(label).replace(QLatin1Char('-'), QStringLiteral("- ")).split(QLatin1Char(' '));
    for (auto word = words.begin() + 1; word < words.end(); ++word) {
        bool const isName = word->mid(1) != word->mid(1).toLower(); // "API", "MacBook"
        if (!isName) *word = word->toLower();
    }
    return words.join(QLatin1Char(' ')).replace(QStringLiteral("- "), QStringLiteral("-"));
}

}
