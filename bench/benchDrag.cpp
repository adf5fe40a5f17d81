#include "bench/BenchRow.h"
#include "bench/DesktopProcess.h"
#include "bench/LoadedHost.h"

#include <QLabel>
#include <QTimer>
#include <queue>

#include <algorithm>
#include <optional>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Clock = DesktopProcess::Clock;

constexpr int kManyKeys = 32;
constexpr int kSceneCount = 50;
QString const draggedItem = u"Item 2.2"_s;
//! Of a Scene key on the scene that is active already: Streamlabs Desktop hears it, and nothing changes.
constexpr int kPressedKey = 0;

double milliseconds(Clock::duration time)
{
    return std::chrono::duration<double, std::milli>(time).count();
}

//! Seconds of processor time that this process has taken.
double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

//! A host with 32 keys while somebody drags an item, presses a key seven times a second and, every other
//! second, hides or shows the item. What is due while the thread stands still counts from when it was due.
class Drag
{
public:
    explicit Drag(int itemsPerScene)
        : desktop(kSceneCount, itemsPerScene), host(kSceneCount, itemsPerScene, desktop.port())
    {
        host.placeMix(kManyKeys, draggedItem);
        auto const keys = host.console.indices();
        waitUntil([&] {
            return std::ranges::none_of(
                keys, [&](int index) { return host.console.key(index)->face().invalid; });
        });
        constexpr int kKinds = 5;
        for (int index = 1; index < kManyKeys; index += kKinds) {
            sourceTitles.push_back(host.console.key(index)->faceWidget()->findChild<QLabel*>(u"lblTitle"_s));
        }
        desktop.onSceneRequest = [this](Clock::time_point arrived) {
            presses.push_back(milliseconds(arrived - pressedAt.front()));
            pressedAt.pop();
        };
        beat.setTimerType(Qt::PreciseTimer);
        beat.callOnTimeout([this] { onBeat(); });
        settle(2s);
    }

    void run(std::chrono::seconds time)
    {
        memoryBefore = residentMemory();
        double const processorBefore = processorTime();
        lastBeat = Clock::now();
        nextPress = lastBeat + kBetweenPresses;
        nextChange = lastBeat + kBetweenChanges;
        desktop.tell(u"drag "_s + draggedItem);
        beat.start(1);
        settle(time);
        cores = (processorTime() - processorBefore) / static_cast<double>(time.count());
        beat.stop();
        desktop.tell(u"drag"_s);
        settle(1s); // for the last messages and presses to arrive
        memoryAfter = residentMemory();
        for (; !pressedAt.empty(); pressedAt.pop()) { // never arrived
            presses.push_back(milliseconds(Clock::now() - pressedAt.front()));
        }
    }

    double longestGap = 0;
    double cores = 0;
    double memoryBefore = 0; //!< KiB
    double memoryAfter = 0;
    std::vector<double> presses; //!< ms, as all times here
    std::vector<double> changes;

private:
    static constexpr auto kBetweenPresses = 137ms; // in step with nothing else
    static constexpr auto kBetweenChanges = 2s;

    void onBeat()
    {
        auto const now = Clock::now();
        longestGap = std::max(longestGap, milliseconds(now - lastBeat));
        lastBeat = now;
        for (; nextPress <= now; nextPress += kBetweenPresses) {
            pressedAt.push(nextPress);
            host.console.key(kPressedKey)->press();
        }
        if (changedAt) {
            QString const title = isShown ? u"Source"_s : u"Closing"_s;
            if (std::ranges::all_of(
                    sourceTitles, [&](QLabel const* label) { return label->text() == title; })) {
                changes.push_back(milliseconds(Clock::now() - *changedAt));
                changedAt.reset();
            }
        } else if (nextChange <= now) {
            changedAt = nextChange;
            nextChange = now + kBetweenChanges;
            isShown = !isShown;
            desktop.tell((isShown ? u"show "_s : u"hide "_s) + draggedItem);
        }
    }

    DesktopProcess desktop;
    LoadedHost host;
    std::vector<QLabel*> sourceTitles;
    QTimer beat;
    Clock::time_point lastBeat;
    Clock::time_point nextPress;
    std::queue<Clock::time_point> pressedAt;
    Clock::time_point nextChange;
    std::optional<Clock::time_point> changedAt;
    bool isShown = true;
};

BenchRow absolute(QString const& what, QString const& unit, double ours, double limit)
{
    return {.what = what, .floorIs = u"1 "_s + unit, .unit = unit, .ours = ours, .floor = 1, .limit = limit};
}

QList<BenchRow> drag()
{
    constexpr int kItemsPerScene = 40;
    constexpr double kTail = 0.99;
    constexpr double kKibPerMib = 1024;
    Drag drag(kItemsPerScene);
    drag.run(60s);
    QString const ms = u"ms"_s;
    return {
        absolute(
            u"longest stall of the GUI thread while one of 2,000 items is dragged for a minute, 32 keys"_s,
            ms, drag.longestGap, 100),
        absolute(u"memory after that minute beyond what it was before"_s, u"MiB"_s,
            (drag.memoryAfter - drag.memoryBefore) / kKibPerMib, 64),
        absolute(u"processor that minute, relay and keys without the stand-in, per cent of one core"_s,
            u"%"_s, drag.cores * 100, 50),
        absolute(u"the item hidden or shown in that minute to all its faces true (longest)"_s, ms,
            quantile(drag.changes, 1), 500),
        absolute(u"press to request arrived in that minute (99th percentile)"_s, ms,
            quantile(drag.presses, kTail), 50)};
}

QList<BenchRow> dragMany()
{
    constexpr int kItemsPerScene = 200;
    Drag drag(kItemsPerScene);
    drag.run(20s);
    return {absolute(u"longest stall of the GUI thread while one of 10,000 items is dragged, 32 keys"_s,
        u"ms"_s, drag.longestGap, 400)};
}

} // namespace

Benchmarks benchDrag()
{
    return {{u"drag"_s, drag}, {u"drag-10000"_s, dragMany}};
}
