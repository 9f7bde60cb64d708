#pragma once

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Handles/FilmHands.h>
#include <Tavaro/Studio/Preview/FilmPreview.h>

#include <QPointer>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariantList>

#include <optional>

class QHoverEvent;
class QKeyEvent;
class QMouseEvent;

namespace tavaro {

/// The things on a film's picture in a window: takes the hand and the keys, and tells what is to be drawn over the
/// picture, in its own coordinates. It draws nothing itself. Main thread.
class FilmHandles : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(tavaro::EditorSession* session READ session WRITE setSession NOTIFY sessionChanged)
    Q_PROPERTY(tavaro::FilmPreview* preview READ preview WRITE setPreview NOTIFY previewChanged)
    Q_PROPERTY(QRectF film READ film WRITE setFilm NOTIFY filmChanged)
    Q_PROPERTY(QString tool READ tool WRITE setTool NOTIFY toolChanged)
    Q_PROPERTY(bool comparing READ isComparing WRITE setComparing NOTIFY comparingChanged)
    Q_PROPERTY(bool cropped READ isCropped NOTIFY thingsChanged)
    // What there is: {name, place, isSelected, isRound, isLine, isRejected}, the topmost last.
    Q_PROPERTY(QVariantList things READ things NOTIFY thingsChanged)
    Q_PROPERTY(QVariantList grips READ grips NOTIFY thingsChanged)   // points
    Q_PROPERTY(QVariantList guides READ guides NOTIFY thingsChanged) // rectangles one point wide
    Q_PROPERTY(QRectF hovered READ hovered NOTIFY hoveredChanged)    // empty: none but what is selected
    Q_PROPERTY(QRectF drawn READ drawn NOTIFY thingsChanged)
    Q_PROPERTY(QRectF editedPlace READ editedPlace NOTIFY editedTextChanged) // of the text that is edited; empty: none
    Q_PROPERTY(QString editedText READ editedText NOTIFY editedTextChanged)

public:
    explicit FilmHandles(QQuickItem* parent = nullptr);
    ~FilmHandles() override;

    EditorSession* session() const { return session_; }
    void setSession(EditorSession* session);
    FilmPreview* preview() const { return preview_; }
    void setPreview(FilmPreview* preview);
    QRectF film() const { return film_; }
    void setFilm(QRectF const& film);
    QString tool() const;
    void setTool(QString const& name);
    /// Shows the take as it was recorded.
    bool isComparing() const { return isComparing_; }
    void setComparing(bool isComparing);
    bool isCropped() const;

    QVariantList things() const;
    QVariantList grips() const;
    QVariantList guides() const;
    QRectF hovered() const;
    QRectF drawn() const;
    QRectF editedPlace() const;
    QString editedText() const;

    /// By its place in the list of things.
    Q_INVOKABLE void choose(int thing);
    Q_INVOKABLE void nudge(double across, double down);
    Q_INVOKABLE void grow(double factor);
    Q_INVOKABLE void rest();
    Q_INVOKABLE void clearCrop();
    /// Edits the text of the one thing that is selected; false where it has none.
    Q_INVOKABLE bool editText();
    Q_INVOKABLE void setText(QString const& text);
    Q_INVOKABLE void leaveText();

Q_SIGNALS:
    void sessionChanged();
    void previewChanged();
    void filmChanged();
    void toolChanged();
    void comparingChanged();
    void thingsChanged();
    void hoveredChanged();
    void editedTextChanged();
    /// A text asks to be edited, on a double click.
    void textAsked();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void itemChange(ItemChange change, ItemChangeData const& data) override;

private:
    FilmPointer pointerAt(QPointF const& at, Qt::KeyboardModifiers modifiers) const;
    QRectF onItem(NormalizedRect const& rect) const;
    QPointF onItem(UnitPoint2 const& point) const;
    bool isSelected(FilmThing const& thing) const;
    bool takesKey(QKeyEvent const& event) const;
    void leaveByTab(bool forward);
    void look();
    void see();
    void refresh();
    void hover(std::optional<FilmHit> const& hit);

    QPointer<EditorSession> session_;
    QPointer<FilmPreview> preview_;
    QPointer<QQuickWindow> window_; // whose keys are looked at
    std::optional<FilmHands> hands_;
    QRectF film_;
    bool isComparing_ = false;
    std::optional<FilmThing> hovered_, edited_;
};

}
