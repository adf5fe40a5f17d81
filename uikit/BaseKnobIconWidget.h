#pragma once

#include <QWidget>

#include <memory>

class QColor;

namespace Ui {
class BaseKnobIconWidget;
}

//! The face of a knob, 108 x 108 pixels: a dial, a title, and a mask for a knob that is out of use.
class BaseKnobIconWidget : public QWidget
{
    Q_OBJECT

public:
    explicit BaseKnobIconWidget(QWidget* parent = nullptr);
    ~BaseKnobIconWidget() override;

    //! Of the dial; see BaseKnob.
    void setKnobValue(int value);
    void setKnobMaximum(int maximum);
    void setKnobMinimum(int minimum);
    void setKnobColor(QColor const& color);
    void setKnobIcon(QString const& path);
    void showIcon();
    void hideIcon();

    void setTitle(QString const& title);
    void showTitle();
    void hideTitle();
    void showDisable();
    void hideDisable();

private:
    std::unique_ptr<Ui::BaseKnobIconWidget> ui;
};
