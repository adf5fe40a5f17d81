#pragma once

#include "devhost/fakes/StandInModel.h"

#include <QAbstractListModel>

//! A list of the stand-in's scenes, items or audio sources for a view.
//!
//! New contents change only the rows that differ. What the user edits is not shown until the stand-in says
//! so: the model asks for it by a signal.
class EntryModel : public QAbstractListModel
{
    Q_OBJECT

public:
    //! What `Entry::on` looks like.
    enum class Mark { Active, Ticked };

    explicit EntryModel(Mark mark, QObject* parent = nullptr);

    void setEntries(QList<StandInModel::Entry> const& entries);
    //! Empty for no row.
    QString idAt(QModelIndex const& index) const;
    QModelIndex indexOf(QString const& id) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    bool setData(QModelIndex const& index, QVariant const& value, int role) override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;

signals:
    void renameAsked(QString const& id, QString const& name);
    void tickAsked(QString const& id, bool on);

private:
    Mark rowMark;
    QList<StandInModel::Entry> shownEntries;
};
