// tavaro-pass: runs one compositor kernel once, from a JSON file and pictures, so that a formula can be looked at
// alone.

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Looks/CubeLUT.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroRender/Compositor/Compositor.h>
#include <TavaroRender/Kernels/ScreenTexture.h>
#include <TavaroRender/Kernels/UniformsJSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <cmath>
#include <map>
#include <optional>

namespace {

using namespace tavaro;

constexpr int largestSide = 16384;

struct Request {
    std::string uniforms; // JSON text
    std::map<std::string, Image> inputs;
    std::optional<CubeLUT> lut;
    CompositorBackend backend = CompositorBackend::cpu;
};

Image& required(Request& request, std::string const& name) {
    auto const found = request.inputs.find(name);
    if (found == request.inputs.end()) throw Error(fmt::format("This kernel needs a picture: --in {}=FILE.png.", name));
    return found->second;
}

Image runComposite(Request& request) {
    auto const uniforms = decodeCompositeUniforms(request.uniforms);
    float const width = std::round(uniforms.canvasSize.x);
    float const height = std::round(uniforms.canvasSize.y);
    if (!(width >= 1 && width <= largestSide && height >= 1 && height <= largestSide)) {
        throw Error(fmt::format("canvasSize must be from 1 to {} on both sides.", largestSide));
    }
    Image canvas(static_cast<int>(width), static_cast<int>(height));
    Compositor(request.backend)
        .composite(uniforms, ScreenTexture(required(request, "screen").view()), request.inputs["background"].view(),
                   canvas.view());
    return canvas;
}

Image runCursorOverlay(Request& request) {
    auto const uniforms = decodeCursorUniforms(request.uniforms);
    auto canvas = std::move(required(request, "canvas"));
    Compositor(request.backend).cursorOverlay(uniforms, canvas.view());
    return canvas;
}

Image runCameraOverlay(Request& request) {
    auto const uniforms = decodeCameraUniforms(request.uniforms);
    auto canvas = std::move(required(request, "canvas"));
    Compositor(request.backend)
        .cameraOverlay(uniforms, required(request, "camera").view(), request.inputs["matte"].view(),
                       request.lut ? &*request.lut : nullptr, canvas.view());
    return canvas;
}

Image runBlitLayer(Request& request) {
    auto const uniforms = decodeBlitUniforms(request.uniforms);
    auto canvas = std::move(required(request, "canvas"));
    Compositor(request.backend).blitLayer(uniforms, required(request, "layer").view(), canvas.view());
    return canvas;
}

Image runRegionEffect(Request& request) {
    auto const uniforms = decodeRegionUniforms(request.uniforms);
    auto const& source = required(request, "source");
    Image target(source.width(), source.height());
    Compositor(request.backend).regionEffect(uniforms, source.view(), target.view());
    return target;
}

struct Kernel {
    std::string_view name;
    std::vector<std::string_view> inputs;
    Image (*run)(Request&);
};

std::array const kernels{
    Kernel{"composite", {"screen", "background"}, runComposite},
    Kernel{"cursorOverlay", {"canvas"}, runCursorOverlay},
    Kernel{"cameraOverlay", {"canvas", "camera", "matte", "lut"}, runCameraOverlay},
    Kernel{"blitLayer", {"canvas", "layer"}, runBlitLayer},
    Kernel{"regionEffect", {"source"}, runRegionEffect},
};

Kernel const& kernelNamed(std::string const& name) {
    std::vector<std::string_view> names;
    for (auto const& kernel : kernels) {
        if (kernel.name == name) return kernel;
        names.push_back(kernel.name);
    }
    throw Error(fmt::format("There is no kernel “{}”; there are {}.", name, fmt::join(names, ", ")));
}

std::string readText(std::string const& file) {
    auto text = readWholeFile(file);
    if (!text) throw Error(fmt::format("Could not read “{}”: there is no such file.", file));
    return std::move(*text);
}

void readInputs(std::vector<std::string> const& pairs, Kernel const& kernel, Request& request) {
    for (auto const& pair : pairs) {
        auto const equals = pair.find('=');
        auto const name = pair.substr(0, equals);
        if (equals == std::string::npos ||
            std::find(kernel.inputs.begin(), kernel.inputs.end(), name) == kernel.inputs.end()) {
            throw Error(fmt::format("“{}” is no input of {}; its inputs are {}.", pair, kernel.name,
                                    fmt::join(kernel.inputs, ", ")));
        }
        auto const file = pair.substr(equals + 1);
        if (name == "lut")
            request.lut = CubeLUT::parse(readText(file));
        else
            request.inputs[name] = readPNG(file);
    }
}

struct Options {
    std::string kernel;
    std::string uniforms;
    std::vector<std::string> inputs;
    std::string output;
    std::string backend = "cpu";
};

void run(Options const& options) {
    auto const& kernel = kernelNamed(options.kernel);
    Request request{.uniforms = readText(options.uniforms),
                    .backend = options.backend == "reference" ? CompositorBackend::reference : CompositorBackend::cpu};
    readInputs(options.inputs, kernel, request);
    try {
        writePNG(options.output, kernel.run(request).view());
    } catch (JSONError const& error) {
        throw Error(fmt::format("Could not read “{}”: {}.", options.uniforms, error.what()));
    }
}

}

int main(int argc, char** argv) {
    CLI::App app{"Runs one compositor kernel once.", "tavaro-pass"};
    Options options;
    app.add_option("KERNEL", options.kernel, "composite, cursorOverlay, cameraOverlay, blitLayer or regionEffect")
        ->required();
    app.add_option("UNIFORMS", options.uniforms, "JSON: the fields of the kernel's uniform block, vectors as arrays")
        ->required();
    app.add_option(
           "--in", options.inputs,
           "NAME=FILE.png: screen and background for composite; canvas for cursorOverlay; canvas, camera, matte "
           "(its red channel) and lut (a .cube file) for cameraOverlay; canvas and layer (whose alpha is "
           "premultiplied) for blitLayer; source for regionEffect")
        ->take_all()
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("-o,--output", options.output, "the PNG to write")->required();
    app.add_option("--backend", options.backend, "the formulas themselves, or the fast path")
        ->check(CLI::IsMember({"reference", "cpu"}))
        ->capture_default_str();
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    try {
        run(options);
    } catch (std::exception const& error) {
        fmt::print(stderr, "{}\n", error.what());
        return 1;
    }
    return 0;
}
