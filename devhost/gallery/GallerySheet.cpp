#include "devhost/gallery/GallerySheet.h"

#include <QDir>
#include <QFile>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int kMargin = 24;
constexpr int kGap = 16;
constexpr int kCaptionGap = 4;
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

void GallerySheet::beginGroup(QString const& name, QString const& heading)
{
    groups.append({name, heading, {}});
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

QImage GallerySheet::paint(Group const& group)
{
    QFont const captionFont = fontOf(kCaptionPixels, QFont::Normal);
    QFontMetrics const metrics(captionFont);

    // Once to learn the height, once to paint.
    auto const layOut = [&](QPainter* painter) {
        if (painter) {
            painter->setFont(fontOf(kHeadingPixels, QFont::Bold));
            painter->setPen(kHeading);
            painter->drawText(QRect(kMargin, kMargin, kWidth, kHeadingHeight), Qt::AlignTop, group.heading);
            painter->setFont(captionFont);
            painter->setPen(kCaption);
        }
        int x = kMargin;
        int y = kMargin + kHeadingHeight;
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
        return y + rowHeight + kMargin;
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

bool GallerySheet::save(QString const& folder) const
{
    bool const isLarge = qGuiApp->devicePixelRatio() > 1;
    auto const saved = [&](Group const& group) {
        QString const file = folder + u'/' + group.name + (isLarge ? u"@2x.png"_s : u".png"_s);
        constexpr int kSmallestFile = 0;
        return paint(group).save(file, "PNG", kSmallestFile);
    };
    return std::ranges::all_of(groups, saved) && (isLarge || writeIndex(folder));
}

bool GallerySheet::writeIndex(QString const& folder) const
{
    QList<std::pair<QString, QString>> sections;
    for (QString const& file : QDir(folder).entryList({u"window*.png"_s}, QDir::Files, QDir::Name)) {
        QString const name = file.chopped(4);
        if (!name.endsWith(u"@2x"_s)) {
            QString const kind = QString(name.sliced(6)).replace(u'-', u' ');
            sections.append(
                {name, u"The development host's window"_s + (kind.isEmpty() ? kind : u","_s + kind)});
        }
    }
    for (Group const& group : groups) {
        sections.append({group.name, group.heading});
    }
    QString text =
        u"# Everything that users see\n\nDrawn by `./dev gallery`; each picture stands here twice as large "
        "as well, as `NAME@2x.png`.\n\n"_s;
    for (auto const& [name, heading] : sections) {
        text += u"- [%1](%2.png)\n"_s.arg(heading, name);
    }
    for (auto const& [name, heading] : sections) {
        text += u"\n## %1\n\n![%1](%2.png)\n"_s.arg(heading, name);
    }
    QFile file(folder + u"/README.md"_s);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) > 0;
}
