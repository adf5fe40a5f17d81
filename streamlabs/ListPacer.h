#pragma once

#include <QJsonObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

//! Publishes a list as often as the host can bear.
//!
//! A relay sends each publication to every subscriber, and the lists of a large collection measure hundreds
//! of kilobytes, while Streamlabs Desktop reports an item that is dragged sixty times a second: with 32 keys
//! and 2,000 items that used to take the host's memory and thread. So a list goes out at once, unless it went
//! out before and that took the relay t >= 2 ms: then one publication of what the list is by then follows
//! when 10 t have gone by since, or in the next turn of the event loop if they have. (When keys are placed,
//! all of them ask within one turn, and a publication that only the first gets would have the others wait.)
//! Small lists are never held back, and none for more than 5 s.
class ListPacer
{
public:
    //! Time since any moment; monotonic.
    using Clock = std::function<std::chrono::nanoseconds()>;
    using MakePayload = std::function<QJsonObject()>;
    //! Hands the payload to the relay. The time that this takes is the cost. It may destroy the pacer.
    using Publish = std::function<void(QJsonObject const& payload)>;

    ListPacer(MakePayload payload, Publish publish, Clock time);

    //! Publishes the list now, or once when it may be.
    void publish();
    //! What waits stays unpublished. The cost of the last publication still counts.
    void cancel() { timer.stop(); }
    //! How long a publication waits, counted from when it was held back; nothing when none does.
    std::optional<std::chrono::milliseconds> wait() const;

private:
    void publishNow();

    MakePayload makePayload;
    Publish toRelay;
    Clock clock;
    std::chrono::nanoseconds cost{};
    std::chrono::nanoseconds publishedAt{};
    QTimer timer;
    //! Gone with the object.
    std::shared_ptr<char> alive = std::make_shared<char>();
};
