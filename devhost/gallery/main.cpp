// lumen-gallery: everything that users see of the package, a sheet for each part, for the eyes of a person.
//
// Run it with QT_SCALE_FACTOR=2 to see what screens scaled up get.

#include "devhost/gallery/ActionGallery.h"
#include "devhost/gallery/GallerySheet.h"
#include "devhost/gallery/ImageGallery.h"
#include "devhost/gallery/KitGallery.h"

#include <QApplication>
#include <QPalette>
#include <QTranslator>

#include <cstdio>

using namespace Qt::StringLiterals;

int main(int argc, char* argv[])
{
    QApplication const app(argc, argv);
    auto const arguments = QCoreApplication::arguments();
    if (arguments.size() < 2 || arguments.size() > 3) {
        std::fprintf(stderr, "lumen-gallery FOLDER [LANGUAGE] draws the sheets into the folder.\n");
        return 2;
    }
    QTranslator translator;
    QString const language = arguments.value(2, u"en_US"_s);
    if (!translator.load(u":/Streamlabs/language_%1.qm"_s.arg(language))) {
        std::fprintf(stderr, "There is no language %s.\n", qPrintable(language));
        return 2;
    }
    QCoreApplication::installTranslator(&translator);

    // What stands behind the widgets in the host.
    constexpr QColor kHostBackground(30, 30, 30);
    QPalette palette = QApplication::palette();
    palette.setColor(QPalette::Window, kHostBackground);
    QApplication::setPalette(palette);

    GallerySheet sheet;
    ActionGallery::addTo(sheet);
    KitGallery::addTo(sheet);
    ImageGallery::addTo(sheet);
    if (!sheet.save(arguments.at(1))) {
        std::fprintf(stderr, "%s cannot be written to.\n", qPrintable(arguments.at(1)));
        return 1;
    }
    return 0;
}
