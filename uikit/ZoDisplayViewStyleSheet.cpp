#include "uikit/ZoDisplayViewStyleSheet.h"

using namespace Qt::StringLiterals;

QString ZoDisplayViewStyleSheet::getColorLabelString(QColor const& color)
{
    return u"QLabel {background-color: rgb(%1,%2,%3);border:2px solid rgb(140,140,140);}"_s.arg(color.red())
        .arg(color.green())
        .arg(color.blue());
}

QString ZoDisplayViewStyleSheet::getIconViewLabelTextString(QColor const& color, int px)
{
    return u"QLabel {color: rgb(%1,%2,%3); font-size:%4px; border:1px; background-color:#00000000;}"_s
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(px);
}

QString ZoDisplayViewStyleSheet::getPropertyViewLabelTextString(QColor const& color, int px)
{
    return u"QLabel {color: rgb(%1,%2,%3); font-size:%4px; border:0px; background-color:#00000000;}"_s
        .arg(color.red())
        .arg(color.green())
        .arg(color.blue())
        .arg(px);
}
