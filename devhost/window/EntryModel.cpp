#include "devhost/window/EntryModel.h"

#include "devhost/window/DarkTheme.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QSize>

#include <algorithm>

EntryModel::EntryModel(Mark mark, QObject* parent) : QAbstractListModel(parent), rowMark(mark) {}

void EntryModel::setEntries(QList<StandInModel::Entry> const& entries)
{
    // What was added, removed or exchanged lies between the rows that both begin and both end with.
    auto const sameId = [](auto const& a, auto const& b) { return a.id == b.id; };
    auto const head =
        std::mismatch(shownEntries.cbegin(), shownEntries.cend(), entries.cbegin(), entries.cend(), sameId);
    qsizetype const first = head.first - shownEntries.cbegin();
    auto const tail = std::mismatch(shownEntries.crbegin(), shownEntries.crend() - first, entries.crbegin(),
        entries.crend() - first, sameId);
    qsizetype const same = tail.first - shownEntries.crbegin();

    if (qsizetype const gone = shownEntries.size() - first - same; gone > 0) {
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + gone - 1));
        shownEntries.remove(first, gone);
        endRemoveRows();
    }
    if (qsizetype const added = entries.size() - first - same; added > 0) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + added - 1));
        shownEntries = shownEntries.first(first) + entries.sliced(first, added) + shownEntries.sliced(first);
        endInsertRows();
    }

    auto const changed = std::mismatch(shownEntries.cbegin(), shownEntries.cend(), entries.cbegin());
    if (changed.first == shownEntries.cend()) {
        return;
    }
    auto const last = std::mismatch(shownEntries.crbegin(), shownEntries.crend(), entries.crbegin());
    int const from = static_cast<int>(changed.first - shownEntries.cbegin());
    int const to = static_cast<int>(shownEntries.crend() - last.first) - 1;
    shownEntries = entries;
    emit dataChanged(index(from), index(to));
}

QString EntryModel::idAt(QModelIndex const& index) const
{
    return index.isValid() ? shownEntries.at(index.row()).id : QString();
}

QModelIndex EntryModel::indexOf(QString const& id) const
{
    auto const entry = std::ranges::find(shownEntries, id, &StandInModel::Entry::id);
    return entry == shownEntries.cend() ? QModelIndex()
                                        : index(static_cast<int>(entry - shownEntries.cbegin()));
}

int EntryModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(shownEntries.size());
}

QVariant EntryModel::data(QModelIndex const& index, int role) const
{
    auto const& entry = shownEntries.at(index.row());
    bool const active = rowMark == Mark::Active && entry.on;
    switch (role) {
    case Qt::DisplayRole:
        return entry.isFolder ? tr("▾ %1").arg(entry.name) : entry.name;
    case Qt::EditRole:
        return entry.name;
    case Qt::AccessibleTextRole:
        return active           ? tr("%1, active").arg(entry.name)
               : entry.isFolder ? tr("%1, folder").arg(entry.name)
                                : entry.name;
    case Qt::SizeHintRole: {
        constexpr int kPadding = 6;
        return QSize(0, QFontMetrics(QApplication::font()).height() + kPadding);
    }
    case Qt::CheckStateRole:
        return rowMark == Mark::Ticked && !entry.isFolder ? QVariant(entry.on ? Qt::Checked : Qt::Unchecked)
                                                          : QVariant();
    case Qt::ForegroundRole:
        return active           ? QVariant(DarkTheme::text(DarkTheme::kAccent))
               : entry.isFolder ? QVariant(DarkTheme::text(DarkTheme::kFaintText))
                                : QVariant();
    case Qt::FontRole: {
        QFont font;
        font.setBold(true);
        return active ? QVariant(font) : QVariant();
    }
    default:
        return {};
    }
}

bool EntryModel::setData(QModelIndex const& index, QVariant const& value, int role)
{
    auto const entry = shownEntries.at(index.row()); // a copy: the answer may come while it is in use
    if (role == Qt::EditRole && !value.toString().trimmed().isEmpty()) {
        emit renameAsked(entry.id, value.toString().trimmed());
        return true;
    }
    if (role == Qt::CheckStateRole) {
        emit tickAsked(entry.id, value.toInt() == Qt::Checked);
        return true;
    }
    return false;
}

Qt::ItemFlags EntryModel::flags(QModelIndex const& index) const
{
    if (!index.isValid()) {
        return {};
    }
    auto const common =
        Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsEditable | Qt::ItemNeverHasChildren;
    bool const ticks = rowMark == Mark::Ticked && !shownEntries.at(index.row()).isFolder;
    return ticks ? common | Qt::ItemIsUserCheckable : common;
}
