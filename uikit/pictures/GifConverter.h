#pragma once

#include <QSize>
#include <QString>

#include <functional>

//! Resizes animated GIF files, which ImageMagick reads and writes.
//!
//! Frame count, delays, loop count and transparency stay as they are. Qt scales the pictures, smoothly: in
//! `lumen-bench` that, and to take a few frames at a time, is 26 times as fast as ImageMagick's own sequence,
//! and no worse to look at. Each frame gets a colour table of its own (GifColors), and what does not change
//! from one frame to the next is written once.
//!
//! At most a few frames are in work at a time, so that memory does not grow with their number, on threads
//! that end with the call. The file is checked before ImageMagick sees any of it. ImageMagick's own resource
//! limits hold for the whole process, which is the host's, and are left alone.
//!
//! Memory goes with the file and its largest frame: at most four times the file, and about 50 bytes for each
//! pixel of the canvas or the largest frame. A key face's animation takes some megabytes.
namespace GifConverter {

//! Limits of what is accepted: the canvas and each frame, all frames together (each counts as large as the
//! canvas if it is smaller), the file. `GifFile::kMostFrames` is the limit of their number.
constexpr qint64 kMaxPixels = qint64{4096} * 2304;
constexpr qint64 kMaxTotalPixels = 4'000'000'000;
constexpr qint64 kMaxFileBytes = qint64{256} * 1024 * 1024;

//! Told before each frame how many are done and how many there are; false stops the conversion.
using Step = std::function<bool(qsizetype done, qsizetype all)>;

//! Writes the animation in \a source to \a destination (they may be the same file), every frame resized to
//! the largest size of the picture's ratio inside \a size; a width or height of 0 follows from the other one.
//!
//! Returns true when \a destination is complete. Otherwise it is as it was before, never half-written: when
//! the source cannot be read, is no GIF, is damaged or too large, when memory runs out, when \a step stopped
//! it, or when the destination cannot be written. All but the first and a stop are logged.
//!
//! Any thread; takes up to some milliseconds a frame. The first call in a process prepares ImageMagick.
bool convert(QString const& source, QString const& destination, QSize const& size, Step const& step = {});

} // namespace GifConverter
