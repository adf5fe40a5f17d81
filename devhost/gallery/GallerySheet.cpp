#include "devhost/gallery/GallerySheet.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QWidget>

#include <algorithm>

namespace {

constexpr int kMargin = 24;
constexpr int kGap = 16;
constexpr int kCaptionGap = 4;
constexpr int kGroupGap = 28;
constexpr int kCaptionPixels = 11;
constexpr int kHeadingPixels = 18;
constexpr int kHeadingHeight = 34;
constexpr QColor kBackground{18, 20, 24};
constexpr QColor kCaption{150, 156, 166};
constexpr QColor kHeading{235, 238, 242};

QFont fontOf(int pixels, QFont::Weight weight)
{
    QFont font = QGuiApplication::font();
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

} // namespace

void GallerySheet::beginGroup(QString const& heading)
{
    groups.append({heading, {}});
}

void GallerySheet::add(QString const& caption, QPixmap const& picture)
{
    groups.last().cells.append({caption, picture});
}

void GallerySheet::add(QString const& caption, QWidget& widget, int width)
{
    QRect area = widget.rect();
    if (width > 0) {
        area.setWidth(width);
    }
    add(caption, widget.grab(area));
}

QImage GallerySheet::paint() const
{
    QFont const captionFont = fontOf(kCaptionPixels, QFont::Normal);
    QFont const headingFont = fontOf(kHeadingPixels, QFont::Bold);
    QFontMetrics const metrics(captionFont);

    // Once to learn the height, once to paint.
    auto const layOut = [&](QPainter* painter) {
        int y = kMargin;
        for (Group const& group : groups) {
            if (painter) {
                painter->setFont(headingFont);
                painter->setPen(kHeading);
                painter->drawText(QRect(kMargin, y, kWidth, kHeadingHeight), Qt::AlignTop, group.heading);
                painter->setFont(captionFont);
                painter->setPen(kCaption);
            }
            y += kHeadingHeight;
            int x = kMargin;
            int rowHeight = 0;
            for (Cell const& cell : group.cells) {
                QSize const picture = cell.picture.deviceIndependentSize().toSize();
                QSize const text = metrics.size(0, cell.caption);
                int const width = std::max(picture.width(), text.width());
                if (x > kMargin && x + width > kWidth - kMargin) {
                    x = kMargin;
                    y += rowHeight + kGap;
                    rowHeight = 0;
                }
                if (painter) {
                    painter->drawText(QRect(QPoint(x, y), text), Qt::AlignLeft | Qt::AlignTop, cell.caption);
                    painter->drawPixmap(x, y + text.height() + kCaptionGap, cell.picture);
                }
                rowHeight = std::max(rowHeight, text.height() + kCaptionGap + picture.height());
                x += width + kGap;
            }
            y += rowHeight + kGroupGap;
        }
        return y;
    };

    qreal const ratio = qGuiApp->devicePixelRatio();
    QImage sheet((QSizeF(kWidth, layOut(nullptr)) * ratio).toSize(), QImage::Format_RGB32);
    sheet.setDevicePixelRatio(ratio);
    sheet.fill(kBackground);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::Antialiasing);
    layOut(&painter);
    painter.end();

    // Without the two lowest bits, which nobody sees, gradients take half the room in a file.
    constexpr QRgb kHigh = 0xfffcfcfc;
    constexpr QRgb kLow = 0x00030303;
    constexpr int kShift = 6;
    for (int y = 0; y < sheet.height(); ++y) {
        auto* const line = reinterpret_cast<QRgb*>(sheet.scanLine(y)); // NOLINT(*-reinterpret-cast)
        std::transform(line, line + sheet.width(), line,
            [](QRgb pixel) { return (pixel & kHigh) | ((pixel >> kShift) & kLow); });
    }
    return sheet;
}
