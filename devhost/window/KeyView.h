#pragma once

#include <QPointer>
#include <QWidget>

class ConsoleKey;
class QDropEvent;

//! One position of the console: the live face of the key that is there, or an empty place.
//!
//! It adopts the face. While it is live it passes the user's press on to the key: down at once, triggered
//! when it is let go inside, released without triggering when it is left. Otherwise a click chooses it, and
//! it can be moved, dragged and removed.
class KeyView : public QWidget
{
    Q_OBJECT

public:
    //! Around the face, for the frame; two of them are the gap between two keys.
    static constexpr int kMargin = 4;

    explicit KeyView(QWidget* parent = nullptr);

    //! Shows key number \a index, which is free when \a key is null. \a label is its action's name.
    void setKey(int index, ConsoleKey* key, QString const& label);
    int index() const { return position; }
    //! Framed; the Tab key leads to the current key only, and the arrow keys to the others.
    void setCurrent(bool current);
    void setLive(bool live);
    //! Shows the face this many times as large; 1 is pixel for pixel.
    void setMagnification(double factor);
    bool isHeld() const { return heldBy != kNothing; }
    //! The face says something else now.
    void describe();

    //! What a drag carries: the id of an action, or the number of a key of this window.
    static QString actionMimeType();
    static QString keyMimeType();

    QSize sizeHint() const override;

signals:
    //! The user means this key.
    void chosen();
    void arrowPressed(int key);
    //! An arrow with Ctrl and Shift.
    void moveAsked(int key);
    void removeAsked();
    void menuAsked(QPoint const& globalPosition);
    void actionDropped(QString const& actionId);
    void keyDropped(int from);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    static constexpr int kNothing = -1;
    static constexpr int kMouse = 0;

    void hold(int by);
    void letGo(bool triggers);
    void startDrag();
    bool canTake(QDropEvent const* event) const;
    void updateFocusPolicy();
    void setDropTarget(bool target);

    int position = 0;
    QPointer<ConsoleKey> shownKey;
    QPointer<QWidget> shownFace;
    //! What is magnified, so that a picture of the face alone is pixel for pixel.
    QWidget* stage;
    QString actionLabel;
    double magnification = 1;
    //! The mouse, a key of the keyboard, or nothing.
    int heldBy = kNothing;
    bool isCurrent = false;
    bool isLive = false;
    //! The button went down here: the key goes along when the mouse leaves.
    bool mayDrag = false;
    bool dropTarget = false;
};
