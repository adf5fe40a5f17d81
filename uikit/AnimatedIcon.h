#pragma once

#include <QLabel>
#include <QMovie>
#include <QObject>
#include <QSize>
#include <QString>

#include <memory>

//! Plays one animated GIF in one label, fitted into a size with its aspect ratio kept.
//!
//! The label owns the object. A file that cannot be shown changes nothing: the label keeps what it shows, and
//! an animation that runs goes on. While the label is hidden the animation is paused and costs nothing: no
//! frame is decoded before the label is shown or grabbed. Frames are decoded for the label's device pixel
//! ratio. While an animation is shown the label's own style sheet decoration is not drawn. GUI thread only.
class AnimatedIcon : public QObject
{
    Q_OBJECT

public:
    //! Largest picture that is shown, in pixels of its canvas. Every frame is decoded on the GUI thread, at
    //! about 8 ms per million pixels.
    static constexpr qint64 kMaxPixels = qint64{2560} * 1600;

    explicit AnimatedIcon(QLabel* label);
    ~AnimatedIcon() override;

    //! The largest size with the ratio of \a picture inside \a box, cut to whole pixels, at least 1 x 1.
    //! A picture of exactly the box's ratio gets the box.
    static QSize fitted(QSize const& picture, QSize const& box);

    //! As `fitted` for the key face of 150 x 108 pixels, whose ratio counts as 1.3888888.
    static QSize fittedToKeyFace(QSize const& picture);

    //! Plays \a path in the label, as large as fits into \a box (in the label's own pixels), and turns the
    //! label's scaled contents off. Returns false, with a warning in the log, when the file is no picture of
    //! at most \a maxPixels or, in a visible label, when not even the first frame can be decoded; a label
    //! that is hidden then stays empty. \a path is opened again at every round: replace a playing file only
    //! after `stop`.
    bool play(QString const& path, QSize const& box, qint64 maxPixels = kMaxPixels);

    //! Stops the animation and closes its file; a label that has not been given another picture meanwhile
    //! keeps the frame shown last. An animation out of the resources goes on when it is played next.
    void stop();

    //! Whether an animation is under way, paused ones included.
    bool isPlaying() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    //! An animation and where it is shown, in the label's own pixels.
    struct Scene
    {
        std::unique_ptr<QMovie> movie;
        QSize box;
        QSize size;
    };

    bool start(Scene const& scene) const;
    void show(Scene scene);
    QSize inDevicePixels(QSize const& size) const;
    void paintFrame();

    QLabel* const target;
    Scene current;
    //! The last one out of the resources. Keys switch between a still and a moving icon all the time, and to
    //! open a file and to decode its first frame takes longer than all else that a switch takes.
    Scene resting;
};
