#pragma once

#include <QLabel>

//! A label of one line that ends a text which is too wide for it with "…". Drawn only: `text` stays whole.
//! Rich text and texts of several lines are drawn as a QLabel does it.
class TitleLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};
