#pragma once

#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>

#include <string_view>

namespace tavaro {

/// Reads a uniform block from JSON with its field names as keys and vectors as arrays of numbers. A missing key keeps
/// the field's default. Throws `JSONError`.
CompositeUniforms decodeCompositeUniforms(std::string_view json);
CursorUniforms decodeCursorUniforms(std::string_view json);

}
