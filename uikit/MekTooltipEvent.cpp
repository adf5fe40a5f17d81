#include "uikit/MekTooltipEvent.h"

#include <utility>

MekTooltipEvent::MekTooltipEvent(QString eventName, QString label)
    : QEvent(kType), name(std::move(eventName)), what(std::move(label))
{}

MekTooltipEvent::~MekTooltipEvent() = default;

MekTooltipEvent* MekTooltipEvent::clone() const
{
    return new MekTooltipEvent(*this);
}
