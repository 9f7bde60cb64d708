#pragma once

namespace tavaro {

/// Qt's own messages go into the log of the process from here on, QML's with their file and line.
void logQtMessages();

}
