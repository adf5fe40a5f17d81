#include "streamlabs/ListPacer.h"

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto kCheap = 2ms;
//! Publishing takes an eleventh of the time at most.
constexpr int kRestPerCost = 10;
//! A call that took longer than a tenth of it was not at work, but stood still with the whole machine.
constexpr std::chrono::nanoseconds kLongestRest = 5s;

} // namespace

ListPacer::ListPacer(MakePayload payload, Publish publish, Clock time)
    : makePayload(std::move(payload)), toRelay(std::move(publish)), clock(std::move(time))
{
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    timer.callOnTimeout([this] { publishNow(); });
}

void ListPacer::publish()
{
    if (cost < kCheap) {
        publishNow();
    } else if (!timer.isActive()) {
        auto const rest = std::max(publishedAt + std::min(kRestPerCost * cost, kLongestRest) - clock(), 0ns);
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
    Publish const call = toRelay; // which may take this object with it
    std::weak_ptr const watch = alive;
    QJsonObject const payload = makePayload();
    auto const start = clock();
    call(payload);
    if (!watch.expired()) {
        publishedAt = clock();
        cost = publishedAt - start;
    }
}
