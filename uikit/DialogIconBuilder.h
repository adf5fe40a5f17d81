#pragma once

#include "uikit/pictures/GifConversion.h"
#include "uikit/pictures/PictureFile.h"

#include <QDialog>
#include <QImage>
#include <QPixmap>
#include <QPoint>
#include <QSize>
#include <QString>

#include <memory>

class AnimatedIcon;

namespace Ui {
class DialogIconBuilder;
}

//! Shows a picture as a key face will show it, lets the user choose how it fills the face of 150 x 108
//! pixels, and on OK writes the outcome as a new file into the host's icon folder ("icon" below
//! `ZoLumenProxy::configDir`). Animations are resized with their ratio kept.
//!
//! Resizing an animation takes a while: from OK on the dialog shows the progress and only Cancel works, while
//! the event loop keeps turning. When the dialog has closed with `QDialog::Accepted`, the file is complete.
//! However else it ends (Cancel, Escape, `done`, deletion), the work is stopped first and what it had begun
//! to write is removed.
//!
//! What a file is counts by its content. A still picture whose name tells another kind becomes a PNG file.
//!
//! Failures: a file that cannot be read is logged and not shown. While the icon folder cannot be written to,
//! a line says that OK replaces a still picture itself; that a copy or a file could not be written is not
//! reported otherwise.
class DialogIconBuilder : public QDialog
{
    Q_OBJECT

public:
    explicit DialogIconBuilder(QWidget* parent = nullptr);
    ~DialogIconBuilder() override;

    //! Begins with the picture at \a path. The preview stays as it is if there is no such file.
    void setImagePath(QString path);
    //! The same, but when the file is no picture that can be shown the user is told, the picture before
    //! stays, and false comes back.
    bool openPicture(QString const& path);
    //! The picture as given until OK, the new file after it; empty after Cancel.
    QString getImagePath() const;

    //! The still picture at \a path on a face of 150 x 108 pixels. \a mode is the number of an
    //! IconTransform::Mode; of any other, and of a file that cannot be read, a null image comes back and a
    //! warning is logged.
    QImage getIconTransform(QString path, int const mode);

    //! Writes \a pixmap, filling the face, as a PNG file into the icon folder and returns the file's full
    //! path; empty if that cannot be written. A file of the same minute and second is replaced.
    QString saveExtAppIcon(QPixmap pixmap);

    //! Writes the animation \a source, resized into \a size, to \a destination, which may be the same file.
    //! The file is complete when the call returns, so the call blocks, for some milliseconds a frame; OK does
    //! the same without blocking. What cannot be converted leaves the destination as it was. See
    //! GifConverter.
    void gifConvert(QString const& source, QString const& destination, QSize const& size);

signals:
    //! On OK, the absolute folder of the file.
    void fileChanged(QString const& folder);

public slots:
    void on_btnOpenFile_clicked();
    void onBuilderListChanged(int mode);
    void on_btnOk_clicked();
    void on_btnCancel_clicked();
    void done(int result) override;
    //! Escape and closing the window are Cancel.
    void reject() override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    bool isGif() const;
    bool hasPicture() const;
    void setupImage();
    void copyImage();
    void onConversionFinished();
    void saveAndAccept();
    void showConverting(bool isConverting);

    std::unique_ptr<Ui::DialogIconBuilder> ui;
    QString imagePath;
    QImage image; // the transformed still picture; null for an animation
    QSize scaledSize;
    AnimatedIcon* animation = nullptr; // the preview's
    PictureFile picture;
    GifConversion conversion;
    QPoint pressPoint;
    bool isDragging = false;
};
