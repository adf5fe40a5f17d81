#pragma once

#include <QEvent>
#include <QString>

//! Tells the application object that the user was shown something worth counting. Nobody has to listen.
class MekTooltipEvent : public QEvent
{
public:
    static constexpr auto kType = static_cast<QEvent::Type>(3417);
    //! The event name of a tooltip that was shown.
    static inline QString const kTooltip = QString::fromLatin1("Tooltip");

    MekTooltipEvent(QString eventName, QString label);
    ~MekTooltipEvent() override;

    QString const& eventName() const { return name; }
    //! What was shown, under the name by which the host counts it.
    QString const& label() const { return what; }

    MekTooltipEvent* clone() const override;

protected:
    MekTooltipEvent(MekTooltipEvent const&) = default;
    MekTooltipEvent& operator=(MekTooltipEvent const&) = default;

private:
    QString name;
    QString what;
};
