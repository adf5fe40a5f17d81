#include "devhost/window/KeyLed.h"

#include "devhost/window/DarkTheme.h"

#include <QPainter>

namespace {

constexpr int kGlow = 18; // px across
constexpr int kDot = 8;
constexpr int kGap = 4;

} // namespace

KeyLed::KeyLed(QWidget* parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void KeyLed::setFunction(QString const& name)
{
    current = name;
    setLit(shining);
    updateGeometry();
}

void KeyLed::setLit(bool lit)
{
    shining = lit;
    setAccessibleName(lit ? tr("LED %1, lit").arg(current) : tr("LED %1, dark").arg(current));
    setToolTip(accessibleName());
    update();
}

QSize KeyLed::sizeHint() const
{
    return {
        kGlow + kGap + fontMetrics().horizontalAdvance(current) + kGap, qMax(kGlow, fontMetrics().height())};
}

void KeyLed::paintEvent([[maybe_unused]] QPaintEvent* event)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPointF const centre(kGlow / 2.0, height() / 2.0);
    if (shining) {
        QRadialGradient glow(centre, kGlow / 2.0);
        QColor edge = DarkTheme::kLit;
        edge.setAlpha(0);
        glow.setColorAt(0.4, DarkTheme::kLit);
        glow.setColorAt(1, edge);
        painter.setPen(Qt::NoPen);
        painter.setBrush(glow);
        painter.drawEllipse(centre, kGlow / 2.0, kGlow / 2.0);
        painter.setBrush(DarkTheme::kLit.lighter(140));
    } else {
        painter.setPen(DarkTheme::kOutline.lighter(140));
        painter.setBrush(DarkTheme::kConsole);
    }
    painter.drawEllipse(centre, kDot / 2.0, kDot / 2.0);
    painter.setPen(DarkTheme::text(shining ? DarkTheme::kText : DarkTheme::kFaintText));
    painter.drawText(rect().adjusted(kGlow + kGap, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, current);
}
