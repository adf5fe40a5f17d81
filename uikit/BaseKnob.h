#pragma once

#include <QColor>
#include <QWidget>

#include <memory>

namespace Ui {
class BaseKnob;
}

//! A dial of 108 x 108 pixels: an arc of up to 270 degrees for a value, and in the middle the value as a
//! number or an icon.
class BaseKnob : public QWidget
{
    Q_OBJECT

public:
    explicit BaseKnob(QWidget* parent = nullptr);
    ~BaseKnob() override;

    //! A value outside of the range is shown as it is; its arc goes on beyond the dial's end, or back from
    //! its beginning.
    void setKnobValue(int number);
    void setKnobColor(QColor const& arcColor);
    void setMinValue(int minimum);
    void setMaxValue(int maximum);
    //! A picture that cannot be shown changes nothing; the log says so.
    void setKnobIcon(QString const& path);
    //! In the number's place.
    void showIcon();
    void hideIcon();

    //! Whole degrees, clockwise from the lower left; 0 for an empty range.
    int getCurrentArcLength() const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void change(qint32& field, int number);

    std::unique_ptr<Ui::BaseKnob> ui;
    QColor color{224, 147, 55};
    qint32 value = 0;
    qint32 maxValue = 100;
    qint32 minValue = 0;
    //! Pixels.
    qint32 arcWidth = 18;
};
