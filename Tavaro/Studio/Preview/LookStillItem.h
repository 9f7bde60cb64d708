#pragma once

#include <Tavaro/Studio/Preview/LookStills.h>
#include <Tavaro/Studio/Preview/StillItem.h>

#include <QPointer>
#include <QVariantMap>

namespace tavaro {

/// Shows what changes would make of a project, anew when that is another.
class LookStillItem : public StillItem {
    Q_OBJECT
    Q_PROPERTY(tavaro::LookStills* looks READ looks WRITE setLooks NOTIFY lookChanged)
    Q_PROPERTY(QString subject READ subject WRITE setSubject NOTIFY lookChanged)
    Q_PROPERTY(QVariantMap changes READ changes WRITE setChanges NOTIFY lookChanged) // values by paths of the document

public:
    using StillItem::StillItem;

    LookStills* looks() const { return looks_; }
    void setLooks(LookStills* looks);
    QString const& subject() const { return subject_; }
    void setSubject(QString const& subject);
    QVariantMap const& changes() const { return changes_; }
    void setChanges(QVariantMap const& changes);

Q_SIGNALS:
    void lookChanged();

protected:
    void askFor(QSize const& pixels) override;

private:
    QPointer<LookStills> looks_;
    QString subject_;
    QVariantMap changes_;
    LookStills::Interest interest_;
};

}
