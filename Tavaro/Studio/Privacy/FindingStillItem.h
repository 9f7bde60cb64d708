#pragma once

#include <Tavaro/Studio/Preview/StillItem.h>
#include <Tavaro/Studio/Privacy/FindingStills.h>

#include <QPointer>

namespace tavaro {

/// Shows what is around a finding.
class FindingStillItem : public StillItem {
    Q_OBJECT
    Q_PROPERTY(tavaro::FindingStills* stills READ stills WRITE setStills NOTIFY findingChanged)
    Q_PROPERTY(QString identity READ identity WRITE setIdentity NOTIFY findingChanged) // of the redaction

public:
    using StillItem::StillItem;

    FindingStills* stills() const { return stills_; }
    void setStills(FindingStills* stills);
    QString const& identity() const { return identity_; }
    void setIdentity(QString const& identity);

Q_SIGNALS:
    void findingChanged();

protected:
    void askFor(QSize const& pixels) override;

private:
    QPointer<FindingStills> stills_;
    QString identity_;
    FindingStills::Interest interest_;
};

}
