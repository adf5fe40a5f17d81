#include "devhost/EntryModel.h"

#include "devhost/DarkTheme.h"

#include <QApplication>
#include <QFont>
#include <QFontMetrics>
#include <QSize>

#include <algorithm>

EntryModel::EntryModel(Mark mark, QObject* parent) : QAbstractListModel(parent), m_mark(mark) {}

void EntryModel::setEntries(QList<StandInModel::Entry> const& entries)
{
    // What was added, removed or exchanged lies between the rows that both begin and both end with.
    auto const sameId = [](auto const& a, auto const& b) { return a.id == b.id; };
    auto const head =
        std::mismatch(m_entries.cbegin(), m_entries.cend(), entries.cbegin(), entries.cend(), sameId);
    qsizetype const first = head.first - m_entries.cbegin();
    auto const tail = std::mismatch(
        m_entries.crbegin(), m_entries.crend() - first, entries.crbegin(), entries.crend() - first, sameId);
    qsizetype const same = tail.first - m_entries.crbegin();

    if (qsizetype const gone = m_entries.size() - first - same; gone > 0) {
        beginRemoveRows({}, static_cast<int>(first), static_cast<int>(first + gone - 1));
        m_entries.remove(first, gone);
        endRemoveRows();
    }
    if (qsizetype const added = entries.size() - first - same; added > 0) {
        beginInsertRows({}, static_cast<int>(first), static_cast<int>(first + added - 1));
        m_entries = m_entries.first(first) + entries.sliced(first, added) + m_entries.sliced(first);
        endInsertRows();
    }

    auto const changed = std::mismatch(m_entries.cbegin(), m_entries.cend(), entries.cbegin());
    if (changed.first == m_entries.cend()) {
        return;
    }
    auto const last = std::mismatch(m_entries.crbegin(), m_entries.crend(), entries.crbegin());
    int const from = static_cast<int>(changed.first - m_entries.cbegin());
    int const to = static_cast<int>(m_entries.crend() - last.first) - 1;
    m_entries = entries;
    emit dataChanged(index(from), index(to));
}

QString EntryModel::idAt(QModelIndex const& index) const
{
    return index.isValid() ? m_entries.at(index.row()).id : QString();
}

QModelIndex EntryModel::indexOf(QString const& id) const
{
    auto const entry = std::ranges::find(m_entries, id, &StandInModel::Entry::id);
    return entry == m_entries.cend() ? QModelIndex() : index(static_cast<int>(entry - m_entries.cbegin()));
}

int EntryModel::rowCount(QModelIndex const& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant EntryModel::data(QModelIndex const& index, int role) const
{
    auto const& entry = m_entries.at(index.row());
    bool const active = m_mark == Mark::Active && entry.on;
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
        constexpr int padding = 6;
        return QSize(0, QFontMetrics(QApplication::font()).height() + padding);
    }
    case Qt::CheckStateRole:
        return m_mark == Mark::Ticked && !entry.isFolder ? QVariant(entry.on ? Qt::Checked : Qt::Unchecked)
                                                         : QVariant();
    case Qt::ForegroundRole:
        return active           ? QVariant(DarkTheme::accent)
               : entry.isFolder ? QVariant(DarkTheme::faintText)
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
    auto const entry = m_entries.at(index.row()); // a copy: the answer may come while it is in use
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
    bool const ticks = m_mark == Mark::Ticked && !m_entries.at(index.row()).isFolder;
    return ticks ? common | Qt::ItemIsUserCheckable : common;
}
