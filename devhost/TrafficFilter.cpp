#include "devhost/TrafficFilter.h"

#include "devhost/TrafficModel.h"

#include <algorithm>

void TrafficFilter::setWords(QString const& words)
{
    m_words = words.split(u' ', Qt::SkipEmptyParts);
    invalidateFilter();
}

bool TrafficFilter::filterAcceptsRow(int row, QModelIndex const& parent) const
{
    if (m_words.isEmpty()) {
        return true;
    }
    QString const way = sourceModel()->index(row, TrafficModel::WayColumn, parent).data().toString();
    QString const text = sourceModel()
                             ->index(row, TrafficModel::MessageColumn, parent)
                             .data(TrafficModel::wholeTextRole)
                             .toString();
    return std::ranges::all_of(m_words, [&](QString const& word) {
        return way.contains(word, Qt::CaseInsensitive) || text.contains(word, Qt::CaseInsensitive);
    });
}
