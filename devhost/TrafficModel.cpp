#include "devhost/TrafficModel.h"

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

TrafficModel::TrafficModel(QObject* parent) : QAbstractTableModel(parent)
{
    constexpr auto soon = std::chrono::milliseconds(50);
    m_takingIn.setSingleShot(true);
    m_takingIn.setInterval(soon);
    m_takingIn.callOnTimeout(this, &TrafficModel::takeIn);
}

void TrafficModel::add(QString const& way, QString const& text, qsizetype length)
{
    if (m_waiting.size() == mostLines) {
        m_waiting.removeFirst();
    }
    m_waiting.append({QTime::currentTime(), way, text.left(longestText), length});
    if (!m_takingIn.isActive()) {
        m_takingIn.start();
    }
}

void TrafficModel::takeIn()
{
    int const before = static_cast<int>(m_lines.size());
    int const added = static_cast<int>(m_waiting.size());
    if (int const surplus = std::min(before, before + added - mostLines); surplus > 0) {
        beginRemoveRows({}, 0, surplus - 1);
        m_lines.remove(0, surplus);
        endRemoveRows();
    }
    int const first = static_cast<int>(m_lines.size());
    beginInsertRows({}, first, first + added - 1);
    m_lines += m_waiting;
    endInsertRows();
    m_waiting.clear();
}

void TrafficModel::clear()
{
    beginResetModel();
    m_takingIn.stop();
    m_waiting.clear();
    m_lines.clear();
    endResetModel();
}

int TrafficModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int TrafficModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrafficModel::data(QModelIndex const& index, int role) const
{
    Line const& line = m_lines.at(index.row());
    if (role == wholeTextRole) {
        return line.length > line.text.size()
                   ? line.text + tr("\n… and %1 more characters").arg(line.length - line.text.size())
                   : line.text;
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (index.column()) {
    case TimeColumn:
        return line.time.toString(u"HH:mm:ss.zzz"_s);
    case WayColumn:
        return line.way;
    default:
        constexpr qsizetype longestRow = 300; // a view lays out all of what it gets
        return line.text.left(longestRow);
    }
}

QVariant TrafficModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal) {
        return {};
    }
    return section == TimeColumn ? tr("Time") : section == WayColumn ? tr("From and to") : tr("Message");
}
