#include <TavaroPlatform/Version/Version.h>

#include <Commit.h>

namespace tavaro {

std::string_view programVersion() { return TAVARO_VERSION; }

std::string versionOf(std::string_view program) {
    std::string text(program);
    text += " " TAVARO_VERSION;
    std::string_view const commit = TAVARO_COMMIT;
    if (!commit.empty()) text.append(" (").append(commit).append(")");
    return text;
}

}
