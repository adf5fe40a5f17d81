#pragma once

#include <QImage>
#include <QPixmap>
#include <QSize>
#include <QString>
#include <QWidget>

#include <memory>

class AnimatedIcon;
class ZoDisplayViewAttribute;

namespace Ui {
class ZoBaseHotkeyWidget;
}

//! The face of a key, 150 x 108 pixels: icon, title, and the masks pressed, invalid and inactive over them.
//!
//! It can be grabbed while hidden; an animated icon then shows one frame and costs nothing. What is set once
//! more costs next to nothing either.
class ZoBaseHotkeyWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ZoBaseHotkeyWidget(QWidget* parent = nullptr);
    ~ZoBaseHotkeyWidget() override;

    //! Stretched over the whole face.
    void setIconPixmap(QPixmap const& pixmap);
    //! Shows the picture in the file \a path: a GIF plays, as large as fits, anything else is centred, and
    //! cut where it hangs over. A picture that cannot be shown leaves the face empty; the log says so. A
    //! file that has changed since it was set last is read again.
    void setIconAsset(QString const& path);
    void setIconTitle(QString const& title);

    //! Shown unscaled in the icon's place until `keyUp` or the next icon. An animation rests meanwhile.
    void setDownImage(QPixmap const& pixmap);
    void keyDown();
    void keyUp();

    void showInvalid();
    void hideInvalid();
    void showInactive();
    void hideInactive();
    void showText();
    void hideText();

    //! Restyles the title.
    void adjustView(ZoDisplayViewAttribute const& attribute);

    //! See IconTransform::onFace.
    static QImage processHotkeyIcon(QImage const& image, QSize const& size);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    //! The icon that a pressed picture hides.
    struct Covered
    {
        QPixmap pixmap;
        bool isScaled;
        bool isPlaying;
    };

    bool play(QString const& path);
    //! Ends what `setDownImage` began.
    void uncover();
    void showPixmap(QPixmap const& pixmap, bool scaled);

    std::unique_ptr<Ui::ZoBaseHotkeyWidget> ui;
    AnimatedIcon* animation = nullptr;
    QPixmap backdrop;
    QString shownPath;
    QString shownIdentity; // what it looks like depends on nothing else
    std::unique_ptr<Covered> covered;
};
