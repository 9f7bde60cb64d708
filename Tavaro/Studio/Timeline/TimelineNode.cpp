#include <Tavaro/Studio/Timeline/TimelineNode.h>

#include <QQuickWindow>

#include <algorithm>
#include <cmath>

namespace tavaro {

namespace {

// Textures are pictures once more, so those out of view are kept for a moment of scrolling back only.
constexpr std::uint64_t paintsKept = 30;
constexpr std::size_t texturesKept = 256;

}

TimelineNode::TimelineNode(QQuickWindow& window) : window_(window) {
    for (auto& layer : layers_) {
        // Qt's software renderer knows where what is added later goes only below nodes of this kind.
        layer.rects.parent = new QSGTransformNode;
        layer.pictures.parent = new QSGTransformNode;
        appendChildNode(layer.rects.parent);
        appendChildNode(layer.pictures.parent);
    }
}

void TimelineNode::show(TimelineDrawing const& drawing) {
    ++paint_;
    for (std::size_t i = 0; i < layers_.size(); ++i) {
        sync(layers_[i].rects, drawing.layers[i].rects);
        sync(layers_[i].pictures, drawing.layers[i].pictures);
    }
    dropTextures();
}

std::size_t TimelineNode::nodeCount() const {
    std::size_t count = 0;
    for (auto const& layer : layers_) count += layer.rects.nodes.size() + layer.pictures.nodes.size();
    return count;
}

template<class Drawn, class Node> void TimelineNode::sync(Pool<Drawn, Node>& pool, std::vector<Drawn> const& wanted) {
    auto const kept = std::min(pool.nodes.size(), wanted.size());
    for (std::size_t i = 0; i < kept; ++i) {
        if (!(pool.drawn[i] == wanted[i])) set(*pool.nodes[i], wanted[i]);
        if constexpr (requires { wanted[i].picture; }) textures_[wanted[i].picture.cacheKey()].used = paint_;
    }
    for (auto i = kept; i < wanted.size(); ++i) {
        pool.nodes.push_back(made(wanted[i]));
        pool.parent->appendChildNode(pool.nodes.back());
    }
    while (pool.nodes.size() > wanted.size()) {
        pool.parent->removeChildNode(pool.nodes.back());
        delete pool.nodes.back();
        pool.nodes.pop_back();
    }
    pool.drawn = wanted;
}

QSGRectangleNode* TimelineNode::made(DrawnRect const& drawn) {
    auto* node = window_.createRectangleNode();
    set(*node, drawn);
    return node;
}

QSGImageNode* TimelineNode::made(TimelinePicture const& drawn) {
    auto* node = window_.createImageNode();
    node->setOwnsTexture(false);
    set(*node, drawn);
    return node;
}

void TimelineNode::set(QSGRectangleNode& node, DrawnRect const& drawn) {
    node.setRect(drawn.place);
    node.setColor(drawn.color);
}

void TimelineNode::set(QSGImageNode& node, TimelinePicture const& drawn) {
    node.setTexture(textureOf(drawn.picture));
    node.setRect(drawn.place);
    node.setSourceRect(drawn.source);
    double const ratio = drawn.picture.devicePixelRatio();
    bool const isScaled = std::abs(drawn.source.width() - drawn.place.width() * ratio) > 0.5 ||
                          std::abs(drawn.source.height() - drawn.place.height() * ratio) > 0.5;
    // A column of a box is the same all over.
    bool const isColumn = drawn.source.width() <= 2;
    node.setFiltering(isScaled && !isColumn ? QSGTexture::Linear : QSGTexture::Nearest);
}

QSGTexture* TimelineNode::textureOf(QImage const& picture) {
    auto& texture = textures_[picture.cacheKey()];
    if (!texture.texture)
        texture.texture.reset(window_.createTextureFromImage(picture, QQuickWindow::TextureHasAlphaChannel));
    texture.used = paint_;
    return texture.texture.get();
}

void TimelineNode::dropTextures() {
    if (textures_.size() <= texturesKept) return;
    std::erase_if(textures_, [&](auto const& each) { return each.second.used + paintsKept < paint_; });
}

}
