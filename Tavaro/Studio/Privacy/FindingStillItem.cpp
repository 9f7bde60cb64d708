#include <Tavaro/Studio/Privacy/FindingStillItem.h>

namespace tavaro {

void FindingStillItem::setStills(FindingStills* stills) {
    if (stills == stills_) return;
    if (stills_) stills_->disconnect(this);
    stills_ = stills;
    if (stills_) connect(stills_, &FindingStills::changed, this, [this] { ask(); });
    ask();
    Q_EMIT findingChanged();
}

void FindingStillItem::setIdentity(QString const& identity) {
    if (identity == identity_) return;
    identity_ = identity;
    show({});
    ask();
    Q_EMIT findingChanged();
}

void FindingStillItem::askFor(QSize const& pixels) {
    auto const redaction = UUID::parse(identity_.toStdString());
    if (!stills_ || !redaction) return;
    interest_ =
        stills_->draw(*redaction, {pixels.width(), pixels.height()}, [this](QImage const& picture) { show(picture); });
}

}
