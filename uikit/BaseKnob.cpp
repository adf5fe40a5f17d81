#include "uikit/BaseKnob.h"

#include "ui_BaseKnob.h"
#include "uikit/KitStyle.h"
#include "uikit/pictures/PictureFile.h"

#include <QPainter>
#include <QPaintEvent>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

// Degrees, counter-clockwise from three o'clock.
constexpr int kStart = 225;
constexpr int kSweep = 270;
constexpr int kCircle = 360;
// What QPainter counts in.
constexpr int kPerDegree = 16;

} // namespace

BaseKnob::BaseKnob(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::BaseKnob>())
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"BaseKnob"_s));
    setAttribute(Qt::WA_StyledBackground);
    hideIcon();
}

BaseKnob::~BaseKnob() = default;

void BaseKnob::setKnobValue(int number)
{
    change(value, number);
    ui->lblVolume->setNum(number);
}

void BaseKnob::setKnobColor(QColor const& arcColor)
{
    if (arcColor.isValid() && arcColor != color) {
        color = arcColor;
        update();
    }
}

void BaseKnob::setMinValue(int minimum)
{
    change(minValue, minimum);
}

void BaseKnob::setMaxValue(int maximum)
{
    change(maxValue, maximum);
}

void BaseKnob::setKnobIcon(QString const& path)
{
    QPixmap const icon =
        PictureFile::pixmap(path, ui->lblIcon->size(), devicePixelRatioF(), PictureFile::Fit::Face);
    if (!icon.isNull()) {
        ui->lblIcon->setPixmap(icon);
    }
}

void BaseKnob::showIcon()
{
    ui->lblIcon->raise();
    ui->lblIcon->show();
    ui->lblVolume->hide();
}

void BaseKnob::hideIcon()
{
    ui->lblVolume->raise();
    ui->lblVolume->show();
    ui->lblIcon->hide();
}

int BaseKnob::getCurrentArcLength() const
{
    // A host that moves both ends passes through an empty range.
    if (maxValue == minValue) {
        return 0;
    }
    qint64 const degrees = (qint64{value} - minValue) * kSweep / (qint64{maxValue} - minValue);
    using Limits = std::numeric_limits<int>;
    return static_cast<int>(std::clamp<qint64>(degrees, Limits::min(), Limits::max()));
}

void BaseKnob::paintEvent(QPaintEvent* /*event*/)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(QPoint(width() / 2, height() / 2));
    painter.setPen(QPen(color, arcWidth, Qt::SolidLine, Qt::FlatCap));
    int const radius = width() / 2 - arcWidth;
    int const length = std::clamp(getCurrentArcLength(), -kCircle, kCircle);
    painter.drawArc(-radius, -radius, 2 * radius, 2 * radius, kStart * kPerDegree, -length * kPerDegree);
}

void BaseKnob::change(qint32& field, int number)
{
    if (field != number) {
        field = number;
        update();
    }
}
