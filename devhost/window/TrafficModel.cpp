#include "devhost/window/TrafficModel.h"

#include <algorithm>
#include <chrono>

using namespace Qt::StringLiterals;

TrafficModel::TrafficModel(QObject* parent) : QAbstractTableModel(parent)
{
    constexpr auto kSoon = std::chrono::milliseconds(50);
    takingIn.setSingleShot(true);
    takingIn.setInterval(kSoon);
    takingIn.callOnTimeout(this, &TrafficModel::takeIn);
}

void TrafficModel::add(QString const& way, QString const& task, QString const& text, qsizetype length)
{
    if (waiting.size() == kMostLines) {
        waiting.removeFirst();
    }
    waiting.append({QTime::currentTime(), way, task, text.left(kLongestText), length});
    if (!takingIn.isActive()) {
        takingIn.start();
    }
}

void TrafficModel::takeIn()
{
    int const before = static_cast<int>(lines.size());
    int const added = static_cast<int>(waiting.size());
    if (int const surplus = std::min(before, before + added - kMostLines); surplus > 0) {
        beginRemoveRows({}, 0, surplus - 1);
        lines.remove(0, surplus);
        endRemoveRows();
    }
    int const first = static_cast<int>(lines.size());
    beginInsertRows({}, first, first + added - 1);
    lines += waiting;
    endInsertRows();
    waiting.clear();
}

void TrafficModel::clear()
{
    beginResetModel();
    takingIn.stop();
    waiting.clear();
    lines.clear();
    endResetModel();
}

int TrafficModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(lines.size());
}

int TrafficModel::columnCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TrafficModel::data(QModelIndex const& index, int role) const
{
    Line const& line = lines.at(index.row());
    if (role == kWholeTextRole) {
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
    case TaskColumn:
        return line.task;
    default:
        constexpr qsizetype kLongestRow = 300; // a view lays out all of what it gets
        return line.text.left(kLongestRow);
    }
}

QVariant TrafficModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal) {
        return {};
    }
    return QStringList{tr("Time"), tr("From and to"), tr("Task"), tr("Message")}.value(section);
}
