#pragma once

#include <QPushButton>

//! A push button that reports its tooltip to the application object, at most once per hover.
//!
//! The report is a posted MekTooltipEvent; its label is the button's dynamic property "gaV4Lab".
class MekTooltipButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;
    //! Delivers what is still on its way: the library of the event's class may be unloaded next.
    ~MekTooltipButton() override;

protected:
    bool event(QEvent* event) override;

private:
    bool reported = false;
};
