#pragma once

namespace tavaro {

/// Makes the editor's types known to QML as types of "Tavaro.Studio": what it gets is made in C++.
void registerEditorTypes();

}
