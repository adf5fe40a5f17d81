#include "uikit/TitleLabel.h"

#include <QPainter>
#include <QStyle>

void TitleLabel::paintEvent(QPaintEvent* event)
{
    QRect const place = contentsRect();
    if (text().contains(u'\n') || Qt::mightBeRichText(text()) ||
        fontMetrics().horizontalAdvance(text()) <= place.width()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    drawFrame(&painter);
    QString const shown = fontMetrics().elidedText(text(), Qt::ElideRight, place.width());
    style()->drawItemText(
        &painter, place, static_cast<int>(alignment()), palette(), isEnabled(), shown, foregroundRole());
}
