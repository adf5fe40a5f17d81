#pragma once

#include "devhost/host/PackageActions.h"

#include <QListWidget>

//! The actions on offer. They are dragged onto keys, or `chosen` by double-click or Enter.
class ActionList : public QListWidget
{
    Q_OBJECT

public:
    explicit ActionList(QWidget* parent = nullptr);

    void setActions(QList<PackageAction> const& actions);
    //! Id of the chosen one; empty when there is none.
    QString currentAction() const;

signals:
    void chosen(QString const& actionId);

protected:
    QMimeData* mimeData(QList<QListWidgetItem*> const& items) const override;
    void paintEvent(QPaintEvent* event) override;
};
