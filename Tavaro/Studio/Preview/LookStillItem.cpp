#include <Tavaro/Studio/Preview/LookStillItem.h>

#include <Tavaro/Studio/Lists/FieldVariant.h>

namespace tavaro {

void LookStillItem::setLooks(LookStills* looks) {
    if (looks == looks_) return;
    if (looks_) looks_->disconnect(this);
    looks_ = looks;
    if (looks_) connect(looks_, &LookStills::changed, this, [this] { ask(); });
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::setSubject(QString const& subject) {
    subject_ = subject;
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::setChanges(QVariantMap const& changes) {
    if (changes == changes_) return;
    changes_ = changes;
    ask();
    Q_EMIT lookChanged();
}

void LookStillItem::askFor(QSize const& pixels) {
    auto const subject = enumNamed<LookSubject>(subject_.toStdString());
    if (!looks_ || !subject) return;
    LookStills::Look look{*subject, {}, {pixels.width(), pixels.height()}};
    for (auto const& [path, value] : changes_.asKeyValueRange())
        look.changes.push_back({path.toStdString(), toJSON(value)});
    interest_ = looks_->draw(look, [this](QImage const& picture) { show(picture); });
}

}
