#pragma once

#include <QSortFilterProxyModel>
#include <QStringList>

//! The messages of a TrafficModel in which all wanted words occur, in the way or in the text, in any case.
class TrafficFilter : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    //! Separated by blanks; none lets everything through.
    void setWords(QString const& words);

protected:
    bool filterAcceptsRow(int row, QModelIndex const& parent) const override;

private:
    QStringList wantedWords;
};
