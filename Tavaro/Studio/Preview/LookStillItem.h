#pragma once

#include <Tavaro/Studio/Preview/LookStills.h>

#include <QPointer>
#include <QQuickPaintedItem>
#include <QVariantMap>

namespace tavaro {

/// Shows what changes would make of a project, anew when that is another. In the middle of the item, its corners round.
class LookStillItem : public QQuickPaintedItem {
    Q_OBJECT
    Q_PROPERTY(tavaro::LookStills* looks READ looks WRITE setLooks NOTIFY lookChanged)
    Q_PROPERTY(QString subject READ subject WRITE setSubject NOTIFY lookChanged)
    Q_PROPERTY(QVariantMap changes READ changes WRITE setChanges NOTIFY lookChanged) // values by paths of the document
    Q_PROPERTY(double radius MEMBER radius_ NOTIFY lookChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY pictureChanged)

public:
    explicit LookStillItem(QQuickItem* parent = nullptr);

    LookStills* looks() const { return looks_; }
    void setLooks(LookStills* looks);
    QString const& subject() const { return subject_; }
    void setSubject(QString const& subject);
    QVariantMap const& changes() const { return changes_; }
    void setChanges(QVariantMap const& changes);
    bool isEmpty() const { return picture_.isNull(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void lookChanged();
    void pictureChanged();

protected:
    void componentComplete() override;
    void geometryChange(QRectF const& now, QRectF const& before) override;
    void itemChange(ItemChange change, ItemChangeData const& data) override;

private:
    void ask();
    void show(QImage const& picture);

    QPointer<LookStills> looks_;
    QString subject_;
    QVariantMap changes_;
    double radius_ = 4;
    QImage picture_;
    LookStills::Interest interest_;
};

}
