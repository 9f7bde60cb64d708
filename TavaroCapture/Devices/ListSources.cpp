#include <TavaroCapture/Devices/ListSources.h>

#include <TavaroCapture/X11/Connection.h>
#include <TavaroCapture/X11/Desktop.h>

namespace tavaro {

SourceList listSources(std::string const& display) {
    x11::Connection connection(display);
    return {x11::displays(connection), x11::windows(connection)};
}

}
