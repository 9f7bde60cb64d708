#pragma once

namespace tavaro {

/// Lets QML have `FileChoice` and `FolderRows` of Tavaro.Files.
void registerFileTypes();

}
