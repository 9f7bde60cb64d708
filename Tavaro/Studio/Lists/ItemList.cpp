#include <Tavaro/Studio/Lists/ItemList.h>

namespace tavaro {

std::unique_ptr<RowsModel> makeItemList(ItemKind kind, std::shared_ptr<OpenProject> const& project) {
    switch (kind) {
    case ItemKind::clip: return std::make_unique<ItemList<VideoClip>>(project);
    case ItemKind::zoom: return std::make_unique<ItemList<ZoomEvent>>(project);
    case ItemKind::overlay: return std::make_unique<ItemList<Overlay>>(project);
    case ItemKind::silence: return std::make_unique<ItemList<SilenceSpan>>(project);
    case ItemKind::caption: return std::make_unique<ItemList<CaptionCue>>(project);
    case ItemKind::scene: return std::make_unique<ItemList<LayoutCue>>(project);
    case ItemKind::sound: return std::make_unique<ItemList<AudioClip>>(project);
    case ItemKind::voiceover: return std::make_unique<ItemList<VoiceoverSegment>>(project);
    case ItemKind::cameraMove: return std::make_unique<ItemList<CameraMove>>(project);
    case ItemKind::track: return std::make_unique<ItemList<AudioTrack>>(project);
    case ItemKind::redaction: return std::make_unique<ItemList<RedactionTrack>>(project);
    }
    return nullptr;
}

}
