#include "streamlabs/ListPacer.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto cheap = 2ms;
//! Publishing takes an eleventh of the time at most.
constexpr int restPerCost = 10;
//! A call that took longer than a tenth of it was not at work, but stood still with the whole machine.
constexpr std::chrono::nanoseconds longestRest = 5s;

} // namespace

ListPacer::ListPacer(MakePayload payload, Publish publish, Clock time)
    : makePayload(std::move(payload)), toRelay(std::move(publish)), clock(std::move(time))
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    timer.callOnTimeout([this] { publishNow(); });
}

std::chrono::nanoseconds ListPacer::steadyClock()
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

void ListPacer::publish()
{
    if (cost < cheap) {
        publishNow();
    } else if (!timer.isActive()) {
        auto const rest = std::max(publishedAt + std::min(restPerCost * cost, longestRest) - clock(), 0ns);
        timer.start(std::chrono::ceil<std::chrono::milliseconds>(rest));
    }
}

std::optional<std::chrono::milliseconds> ListPacer::wait() const
{
    return timer.isActive() ? std::optional(timer.intervalAsDuration()) : std::nullopt;
}

void ListPacer::publishNow()
{
    timer.stop();
    QJsonObject const payload = makePayload();
    Publish const call = toRelay; // which may take this object with it
    Clock const now = clock;
    std::weak_ptr const watch = alive;
    auto const start = now();
    call(payload);
    auto const end = now();
    if (!watch.expired()) {
        cost = end - start;
        publishedAt = end;
    }
}
