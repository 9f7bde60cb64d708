#include <TavaroRender/Layers/Private/LayerSpec.h>

#include <array>
#include <cstring>
#include <type_traits>

namespace tavaro {

namespace {

/// Writes values one after the other, each text with its length, so that different looks never read the same.
class KeyWriter {
public:
    explicit KeyWriter(std::string& key) : key_(key) {}

    template<class Value>
    requires(std::is_arithmetic_v<Value> || std::is_enum_v<Value>) void add(Value value) {
        char bytes[sizeof value];
        std::memcpy(bytes, &value, sizeof value);
        key_.append(bytes, sizeof value);
    }
    void add(std::string const& text) {
        add(text.size());
        key_ += text;
    }
    void add(RGBAColor const& color) {
        for (double const part : {color.r, color.g, color.b, color.a}) add(part);
    }
    void add(CanvasPoint const& point) {
        add(point.x);
        add(point.y);
    }
    template<class Value> void add(std::optional<Value> const& value) {
        add(value.has_value());
        if (value) add(*value);
    }

    void add(LayerSpec::Title const& it) {
        add(it.text);
        add(it.subtitle);
        add(it.ground);
    }
    void add(LayerSpec::Callout const& it) { add(it.text); }
    void add(LayerSpec::Keycap const& it) {
        for (auto const& key : it.keys) add(key);
    }
    void add(LayerSpec::Command const& it) { add(it.text); }
    void add(LayerSpec::Code const& it) {
        add(it.text);
        add(it.language);
    }
    void add(LayerSpec::Caption const& it) {
        add(it.text);
        add(it.style);
        add(it.font);
        for (auto const bytes : {it.shownBytes, it.spokenBegin, it.spokenEnd}) add(bytes);
        add(it.spokenSteps);
    }
    void add(LayerSpec::Arrow const& it) {
        add(it.from);
        add(it.to);
        add(it.drawnSteps);
    }
    void add(LayerSpec::Box const& it) {
        add(it.piece);
        add(it.width);
        add(it.height);
    }
    void add(LayerSpec::Watermark const& it) { add(it.text); }

private:
    std::string& key_;
};

}

std::string LayerSpec::cacheKey() const {
    std::string key;
    KeyWriter writer(key);
    writer.add(kind.index());
    writer.add(fontSize);
    writer.add(color);
    writer.add(background);
    writer.add(highlightColor);
    writer.add(canvasWidth);
    writer.add(canvasHeight);
    writer.add(shownCharacters);
    std::visit([&](auto const& it) { writer.add(it); }, kind);
    return key;
}

std::string_view kindName(LayerSpec const& look) {
    static constexpr std::array<std::string_view, std::variant_size_v<LayerSpec::Kind>> names{
        "title", "callout", "keycap", "command", "code", "caption", "arrow", "box", "watermark"};
    return names[look.kind.index()];
}

}
