#pragma once

#include <TavaroRender/Kernels/BlitUniforms.h>
#include <TavaroRender/Kernels/CameraUniforms.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/RegionUniforms.h>

#include <string_view>

namespace tavaro {

/// Reads a uniform block from JSON with its field names as keys and vectors as arrays of numbers. A missing key keeps
/// the field's default. Throws `JSONError`.
CompositeUniforms decodeCompositeUniforms(std::string_view json);
CursorUniforms decodeCursorUniforms(std::string_view json);
CameraUniforms decodeCameraUniforms(std::string_view json);
BlitUniforms decodeBlitUniforms(std::string_view json);
RegionUniforms decodeRegionUniforms(std::string_view json);

}
