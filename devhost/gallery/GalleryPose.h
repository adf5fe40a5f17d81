#pragma once

#include <QPixmap>
#include <QString>
#include <QWidget>

class QAbstractButton;

//! Widgets as they look under a hand: pointed at, held down, with the keyboard's focus.
namespace GalleryPose {

//! The descendant called \a name, which has to be there.
template <typename Widget = QWidget>
Widget& part(QWidget const& of, QString const& name)
{
    auto* const found = of.findChild<Widget*>(name);
    if (!found) {
        qFatal("The gallery misses %s in %s.", qPrintable(name), of.metaObject()->className());
    }
    return *found;
}

void hover(QWidget& widget);
void press(QAbstractButton& button);
//! Shows the window of \a widget and gives it the focus.
void focus(QWidget& widget);
//! The tooltip that \a widget would show for \a text.
QPixmap tooltip(QWidget& widget, QString const& text);

} // namespace GalleryPose
