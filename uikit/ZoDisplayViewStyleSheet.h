#pragma once

#include <QColor>
#include <QString>

//! The style sheets of the labels that a text look colours and sizes. `px` is the font size in pixels.
class ZoDisplayViewStyleSheet
{
public:
    //! A colour swatch.
    static QString getColorLabelString(QColor const& color);
    //! The title on a key face.
    static QString getIconViewLabelTextString(QColor const& color, int px);
    //! The title in the settings preview.
    static QString getPropertyViewLabelTextString(QColor const& color, int px);
};
