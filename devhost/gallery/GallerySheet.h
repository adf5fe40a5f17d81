#pragma once

#include <QImage>
#include <QList>
#include <QPixmap>
#include <QString>

class QWidget;

//! Lays out pictures with captions, in groups of one dark sheet each, which fits a screen.
//!
//! Everything counts in logical pixels; a sheet has as many device pixels as its pictures, that is, as the
//! scale factor of the process says.
class GallerySheet
{
public:
    //! Width of a sheet, px.
    static constexpr int kWidth = 1880;

    //! What follows stands below this heading, in the file \a name.
    void beginGroup(QString const& name, QString const& heading);
    //! \a caption may have several lines.
    void add(QString const& caption, QPixmap const& picture);
    //! A widget as it looks now, from its left edge up to \a width px; 0 is all of it.
    void add(QString const& caption, QWidget& widget, int width = 0);

    //! Writes NAME.png for each group into \a folder, and README.md, which shows them one below the other
    //! after the pictures of the window that are there; with a scale factor of 2 the pictures alone, as
    //! NAME@2x.png. False when a file cannot be written.
    bool save(QString const& folder) const;

private:
    struct Cell
    {
        QString caption;
        QPixmap picture;
    };
    struct Group
    {
        QString name;
        QString heading;
        QList<Cell> cells;
    };

    static QImage paint(Group const& group);
    bool writeIndex(QString const& folder) const;

    QList<Group> groups;
};
