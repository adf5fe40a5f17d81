#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QString>

#include <algorithm>
#include <vector>

//! One measurement beside its floor, both taken in the same run.
struct BenchRow
{
    QString what{};
    QString floorIs{};
    //! The unit of both figures, such as "us".
    QString unit = QStringLiteral("us");
    double ours = 0;
    double floor = 0;
    //! ours / floor must not exceed this.
    double limit = 0;

    double ratio() const { return ours / floor; }
    bool holds() const { return ratio() <= limit; }
};

//! Microseconds that \a work takes.
template <typename Work>
double microseconds(Work const& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1000;
}

inline double quantile(std::vector<double> samples, double q)
{
    auto const at =
        samples.begin() + static_cast<std::ptrdiff_t>(q * static_cast<double>(samples.size() - 1));
    std::nth_element(samples.begin(), at, samples.end());
    return *at;
}

//! Runs \a ours and \a floor in turn, so that a machine that slows down slows both; the medians become the
//! row's figures, in microseconds.
template <typename Ours, typename Floor>
BenchRow compare(BenchRow row, int rounds, Ours const& ours, Floor const& floor)
{
    std::vector<double> ourTimes;
    std::vector<double> floorTimes;
    for (int round = 0; round < rounds; ++round) {
        floorTimes.push_back(microseconds(floor));
        ourTimes.push_back(microseconds(ours));
    }
    constexpr double kHalf = 0.5;
    row.ours = quantile(std::move(ourTimes), kHalf);
    row.floor = quantile(std::move(floorTimes), kHalf);
    return row;
}

struct Benchmark
{
    QString name;
    QList<BenchRow> (*measure)();
};

using Benchmarks = QList<Benchmark>;

//! The link to Streamlabs Desktop: round trip, decoding, idling, bad peers.
Benchmarks benchLink();
//! The relay side: publishing and shared decoding of large lists.
Benchmarks benchRelay();
//! Placed keys, through the loaded library: presses, faces, large collections, memory.
Benchmarks benchKeys();
//! The same keys while an item is dragged: stalls, memory, processor, presses, changes.
Benchmarks benchDrag();
//! What drawing faces costs.
Benchmarks benchFaces();
//! What making icons costs.
Benchmarks benchIcons();
