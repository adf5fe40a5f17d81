#include "devhost/window/TrafficFilter.h"

#include "devhost/window/TrafficModel.h"

#include <algorithm>

void TrafficFilter::setWords(QString const& words)
{
    wantedWords = words.split(u' ', Qt::SkipEmptyParts);
    invalidateFilter();
}

bool TrafficFilter::filterAcceptsRow(int row, QModelIndex const& parent) const
{
    if (wantedWords.isEmpty()) {
        return true;
    }
    QString const way = sourceModel()->index(row, TrafficModel::WayColumn, parent).data().toString();
    QString const text = sourceModel()
                             ->index(row, TrafficModel::MessageColumn, parent)
                             .data(TrafficModel::kWholeTextRole)
                             .toString();
    return std::ranges::all_of(wantedWords, [&](QString const& word) {
        return way.contains(word, Qt::CaseInsensitive) || text.contains(word, Qt::CaseInsensitive);
    });
}
