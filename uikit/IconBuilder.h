#pragma once

#include <QPoint>
#include <QString>

//! The dialogs through which the user chooses an icon. Both functions are modal and block.
namespace IconBuilder {

//! Asks where the icon shall come from. \a negatedCorner is the global position of the opening button with
//! both signs turned round (`button->mapFromGlobal(QPoint(0, 0))`). Returns 0 for a local file, 1 for the
//! online icon builder, and 2 for the action's own icon, which \a offersReset puts into the list; everything
//! else means that the user chose nothing.
int showIconEditMenu(QPoint negatedCorner, bool offersReset = false);

//! Lets the user fit the picture at \a path to a key face. Returns the file with the result, or an empty
//! string when the user cancelled, or when the file is no picture that can be shown, which the user is told.
QString getOpenFileName(QString path);

} // namespace IconBuilder
