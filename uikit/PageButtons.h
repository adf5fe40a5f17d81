#pragma once

#include <QList>
#include <QString>

class QButtonGroup;
class QWidget;

//! The row of small page buttons, one per state of an action, along the bottom of a preview.
class PageButtons
{
public:
    //! Pixels of one button, and its distance from the top of the preview.
    static constexpr int kWidth = 36;
    static constexpr int kHeight = 16;
    static constexpr int kTop = 206;

    //! Adds one checkable button per name to \a area and to \a group, with ids from 0. The row is centred and
    //! runs from the left or from the right; when it is wider than \a area no button is made. The name is the
    //! tooltip. Nothing is clicked or connected, and buttons that are there already stay.
    static void append(QWidget* area, QButtonGroup* group, QList<QString> const& names, bool fromLeft);

    //! Takes all buttons out of \a group and hides them; their parent still owns them.
    static void retire(QButtonGroup* group);
};
