#include "uikit/IconBuilder.h"

#include "uikit/DialogIconBuilder.h"
#include "uikit/DialogIconEditMenu.h"

int IconBuilder::showIconEditMenu(QPoint negatedCorner, bool offersReset)
{
    DialogIconEditMenu menu;
    if (offersReset) {
        menu.offerReset();
    }
    // So placed the pointer, which is on the button, is inside the menu; the menu closes when it leaves.
    menu.move(-negatedCorner - QPoint(15, 5));
    menu.raise();
    menu.activateWindow();
    return menu.exec();
}

// NOLINTNEXTLINE(performance-unnecessary-value-param)
QString IconBuilder::getOpenFileName(QString path)
{
    DialogIconBuilder builder;
    if (!builder.openPicture(path)) {
        return {};
    }
    builder.activateWindow();
    builder.raise();
    return builder.exec() == QDialog::Accepted ? builder.getImagePath() : QString();
}
