#pragma once

#include <QList>
#include <QPixmap>
#include <QString>

class QWidget;

//! Lays out pictures with captions, in groups, on one dark sheet.
//!
//! Everything counts in logical pixels; the sheet has as many device pixels as its pictures, that is, as the
//! scale factor of the process says.
class GallerySheet
{
public:
    //! Width of the sheet, px.
    static constexpr int kWidth = 2040;

    //! What follows stands below this heading.
    void beginGroup(QString const& heading);
    //! \a caption may have several lines.
    void add(QString const& caption, QPixmap const& picture);
    //! A widget as it looks now, from its left edge up to \a width px; 0 is all of it.
    void add(QString const& caption, QWidget& widget, int width = 0);

    QImage paint() const;

private:
    struct Cell
    {
        QString caption;
        QPixmap picture;
    };
    struct Group
    {
        QString heading;
        QList<Cell> cells;
    };

    QList<Group> groups;
};
