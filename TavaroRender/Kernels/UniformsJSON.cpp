#include <TavaroRender/Kernels/UniformsJSON.h>

#include <TavaroCore/Records/JSON.h>

#include <fmt/format.h>

#include <array>

namespace tavaro {

namespace {

template<std::size_t count> std::array<float, count> readNumbers(JSONReader& reader) {
    std::array<float, count> numbers{};
    std::size_t found = 0;
    reader.array([&](std::size_t index) {
        if (index < count) numbers[index] = static_cast<float>(reader.number());
        found = index + 1;
    });
    if (found != count) {
        throw JSONError(JSONError::Kind::wrongType, fmt::format("expected {} numbers, found {}", count, found));
    }
    return numbers;
}

template<class Mode> void readNumber(JSONReader& reader, Mode& mode) {
    std::int32_t number = 0;
    readJSON(reader, number);
    mode = static_cast<Mode>(number);
}

}

// Found by the record reader through their argument.
void readJSON(JSONReader& reader, Float2& value) {
    auto const [x, y] = readNumbers<2>(reader);
    value = {x, y};
}

void readJSON(JSONReader& reader, Float4& value) {
    auto const [x, y, z, w] = readNumbers<4>(reader);
    value = {x, y, z, w};
}

void readJSON(JSONReader& reader, BackgroundMode& mode) { readNumber(reader, mode); }
void readJSON(JSONReader& reader, FrameMode& mode) { readNumber(reader, mode); }
void readJSON(JSONReader& reader, CursorShape& mode) { readNumber(reader, mode); }
void readJSON(JSONReader& reader, ClickShape& mode) { readNumber(reader, mode); }
void readJSON(JSONReader& reader, RegionMode& mode) { readNumber(reader, mode); }

CompositeUniforms decodeCompositeUniforms(std::string_view json) { return decodeJSON<CompositeUniforms>(json); }

CursorUniforms decodeCursorUniforms(std::string_view json) { return decodeJSON<CursorUniforms>(json); }

CameraUniforms decodeCameraUniforms(std::string_view json) { return decodeJSON<CameraUniforms>(json); }

BlitUniforms decodeBlitUniforms(std::string_view json) { return decodeJSON<BlitUniforms>(json); }

RegionUniforms decodeRegionUniforms(std::string_view json) { return decodeJSON<RegionUniforms>(json); }

}
