#include "uikit/IconBuilder.h"

#include "uikit/DialogIconBuilder.h"
#include "uikit/DialogIconEditMenu.h"

#include <utility>

int IconBuilder::showIconEditMenu(QPoint negatedCorner)
{
    DialogIconEditMenu menu;
    // So placed the pointer, which is on the button, is inside the menu; the menu closes when it leaves.
    menu.move(-negatedCorner - QPoint(15, 5));
    menu.raise();
    menu.activateWindow();
    return menu.exec();
}

QString IconBuilder::getOpenFileName(QString path)
{
    DialogIconBuilder builder;
    builder.setImagePath(std::move(path));
    builder.activateWindow();
    builder.raise();
    return builder.exec() == QDialog::Accepted ? builder.getImagePath() : QString();
}
