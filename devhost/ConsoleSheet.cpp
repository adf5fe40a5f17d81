#include "devhost/ConsoleSheet.h"

#include "devhost/Console.h"

#include <QPainter>

#include <algorithm>

QPixmap ConsoleSheet::paint(Console& console)
{
    constexpr QSize face(150, 108);
    constexpr int gap = 12;
    constexpr int columns = 5;
    constexpr int fewestRows = 3;

    auto const indices = console.indices();
    int const keys = indices.isEmpty() ? 0 : indices.last() + 1;
    int const rows = std::max(fewestRows, (keys + columns - 1) / columns);
    QPixmap sheet(columns * (face.width() + gap) + gap, rows * (face.height() + gap) + gap);
    sheet.fill(QColor(18, 18, 18));
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int index = 0; index < rows * columns; ++index) {
        QPoint const at(
            gap + index % columns * (face.width() + gap), gap + index / columns * (face.height() + gap));
        ConsoleKey const* const key = console.key(index);
        if (key && key->faceWidget()) {
            painter.drawPixmap(at, key->faceWidget()->grab());
        } else {
            constexpr int radius = 6;
            painter.setPen(QColor(48, 48, 48));
            painter.setBrush(QColor(24, 24, 24));
            painter.drawRoundedRect(QRect(at, face), radius, radius);
        }
    }
    return sheet;
}
