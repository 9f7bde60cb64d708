#pragma once

namespace tavaro {

/// Makes `PreviewItem` known to QML as a type of Tavaro.Studio, and the objects that it shows.
void registerPreviewTypes();

}
