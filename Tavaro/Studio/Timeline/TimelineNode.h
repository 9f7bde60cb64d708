#pragma once

#include <Tavaro/Studio/Timeline/TimelineDrawing.h>

#include <QSGImageNode>
#include <QSGNode>
#include <QSGRectangleNode>
#include <QSGTexture>

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

class QQuickWindow;

namespace tavaro {

/// The nodes of a timeline: of rectangles and pictures alone, which every renderer of Qt draws. Nodes are kept from
/// drawing to drawing, and touched only where something differs. Belongs to the scene graph's thread.
class TimelineNode : public QSGNode {
public:
    explicit TimelineNode(QQuickWindow& window);

    void show(TimelineDrawing const& drawing);

    /// How many there are, for who counts the cost.
    std::size_t nodeCount() const;

private:
    template<class Drawn, class Node> struct Pool {
        QSGNode* parent = nullptr;
        std::vector<Drawn> drawn;
        std::vector<Node*> nodes; // the parent's
    };
    struct Layer {
        Pool<DrawnRect, QSGRectangleNode> rects;
        Pool<TimelinePicture, QSGImageNode> pictures;
    };
    struct Texture {
        std::unique_ptr<QSGTexture> texture;
        std::uint64_t used = 0;
    };

    template<class Drawn, class Node> void sync(Pool<Drawn, Node>& pool, std::vector<Drawn> const& wanted);
    QSGRectangleNode* made(DrawnRect const& drawn);
    QSGImageNode* made(TimelinePicture const& drawn);
    void set(QSGRectangleNode& node, DrawnRect const& drawn);
    void set(QSGImageNode& node, TimelinePicture const& drawn);
    QSGTexture* textureOf(QImage const& picture);
    void dropTextures();

    QQuickWindow& window_;
    std::array<Layer, TimelineDrawing::layerCount> layers_;
    std::unordered_map<qint64, Texture> textures_; // by the pictures' cache keys
    std::uint64_t paint_ = 0;
};

}
