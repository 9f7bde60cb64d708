#pragma once

namespace tavaro {

/// Makes the editor's types known to QML as types of "Tavaro.Editor": what it gets is made in C++.
void registerEditorTypes();

}
