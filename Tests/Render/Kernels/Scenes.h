#pragma once

#include <random>
#include <string>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroRender/Compositor/Compositor.h>
#include <TavaroRender/Kernels/CompositeUniforms.h>
#include <TavaroRender/Kernels/CursorUniforms.h>
#include <TavaroRender/Kernels/ScreenTexture.h>

namespace tavaro::scenes {

/// The same numbers from one seed on every machine.
class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    float between(float low, float high) {
        return low + (high - low) * static_cast<float>(engine_() >> 8) / 16777216.0f;
    }
    int upTo(int last) { return static_cast<int>(engine_() % static_cast<unsigned>(last + 1)); }
    bool chance(float probability) { return between(0, 1) < probability; }
    Float4 color() { return {between(0, 1), between(0, 1), between(0, 1), between(0, 1)}; }

private:
    std::mt19937 engine_;
};

struct Scene {
    CompositeUniforms uniforms;
    Image screen;
    Image background;
    int width = 0;
    int height = 0;
};

/// A picture of smooth areas, hard edges and noise.
Image picture(Random& random, int width, int height);

/// A scene anywhere in the range of what can be asked for, and a little beyond.
Scene randomScene(unsigned seed);

/// A scene as a polished recording has it: `width` × `height` canvas, gradient, rounded screen, shadow.
CompositeUniforms plainLook(int width, int height, float padding);

Image drawn(CompositorBackend backend, CompositeUniforms const& uniforms, Image const& screen, Image const& background,
            int width, int height);

/// Holds the kernels to one kind of vector unit (a target of Highway) while it lives.
class VectorUnit {
public:
    explicit VectorUnit(std::int64_t target);
    ~VectorUnit();
    VectorUnit(VectorUnit const&) = delete;
};

/// Draws on copies of the canvas, once on each kind of vector unit of this machine; says which two differ and where, or
/// nothing. Without any vector unit the formulas draw, so that one is not among them.
std::string differenceOfVectorUnits(Image const& canvas, FunctionRef<void(MutableImageView)> draw);

struct Difference {
    int largest = 0;
    int x = 0;
    int y = 0;
};
Difference difference(ImageView a, ImageView b);

struct Pixel {
    int r, g, b, a;
    bool operator==(Pixel const&) const = default;
};
Pixel at(Image const& image, int x, int y);
/// All of one colour.
Image filled(int width, int height, Pixel color);

}
