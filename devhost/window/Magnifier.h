#pragma once

#include <QGraphicsEffect>

//! Draws a widget larger than it is, from its upper left corner on, over its parent. The pixels stay those of
//! the widget: a key of the console has no more either.
class Magnifier : public QGraphicsEffect
{
    Q_OBJECT

public:
    explicit Magnifier(double factor, QObject* parent = nullptr) : QGraphicsEffect(parent), times(factor) {}

    double factor() const { return times; }
    QRectF boundingRectFor(QRectF const& rect) const override;

protected:
    void draw(QPainter* painter) override;

private:
    double times;
};
