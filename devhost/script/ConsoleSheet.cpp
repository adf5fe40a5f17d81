#include "devhost/script/ConsoleSheet.h"

#include "devhost/host/Console.h"

#include <QPainter>

#include <algorithm>

QPixmap ConsoleSheet::paint(Console& console)
{
    constexpr int kGap = 12;
    constexpr int kColumns = 5;
    constexpr int kFewestRows = 3;

    auto const indices = console.indices();
    int const keys = indices.isEmpty() ? 0 : indices.last() + 1;
    int const rows = std::max(kFewestRows, (keys + kColumns - 1) / kColumns);
    QPixmap sheet(kColumns * (ConsoleKey::kFaceSize.width() + kGap) + kGap,
        rows * (ConsoleKey::kFaceSize.height() + kGap) + kGap);
    sheet.fill(QColor(18, 18, 18));
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int index = 0; index < rows * kColumns; ++index) {
        QPoint const at(kGap + index % kColumns * (ConsoleKey::kFaceSize.width() + kGap),
            kGap + index / kColumns * (ConsoleKey::kFaceSize.height() + kGap));
        ConsoleKey const* const key = console.key(index);
        if (key && key->faceWidget()) {
            painter.drawPixmap(at, key->faceWidget()->grab());
        } else {
            constexpr int kRadius = 6;
            painter.setPen(QColor(48, 48, 48));
            painter.setBrush(QColor(24, 24, 24));
            painter.drawRoundedRect(QRect(at, ConsoleKey::kFaceSize), kRadius, kRadius);
        }
    }
    return sheet;
}
