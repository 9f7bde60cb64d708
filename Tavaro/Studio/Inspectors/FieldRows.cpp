#include <Tavaro/Studio/Inspectors/FieldRows.h>

namespace tavaro {

QString inSentence(std::string_view label) {
    auto words = toQString(label).replace(QLatin1Char('-'), QStringLiteral("- ")).split(QLatin1Char(' '));
    for (auto word = words.begin() + 1; word < words.end(); ++word) {
        bool const isName = word->mid(1) != word->mid(1).toLower(); // "API", "MacBook"
        if (!isName) *word = word->toLower();
    }
    return words.join(QLatin1Char(' ')).replace(QStringLiteral("- "), QStringLiteral("-"));
}

}
