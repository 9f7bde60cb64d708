#include <TavaroCapture/Sources/SourceList.h>

#include <TavaroCapture/Sources/Private/DesktopEntries.h>
#include <TavaroCapture/X11/Private/Connection.h>
#include <TavaroCapture/X11/Private/Desktop.h>

#include <fmt/format.h>

namespace tavaro {

std::string WindowInfo::id() const { return fmt::format("window-{}", window); }

SourceList listSources(std::string const& display) {
    x11::Connection connection(display);
    return {x11::displays(connection), x11::windows(connection)};
}

}
