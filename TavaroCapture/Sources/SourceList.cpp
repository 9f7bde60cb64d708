#include <TavaroCapture/Sources/SourceList.h>

#include <fmt/format.h>

namespace tavaro {

std::string WindowInfo::id() const { return fmt::format("window-{}", window); }

}
