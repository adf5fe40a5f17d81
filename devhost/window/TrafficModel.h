#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QString>
#include <QTime>
#include <QTimer>

//! The latest messages on the host's two links, for a view. Memory is bounded: the oldest messages go, and of
//! a long one only the beginning is kept.
class TrafficModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { TimeColumn, WayColumn, TaskColumn, MessageColumn, ColumnCount };
    //! How many messages are kept at least while there are more.
    static constexpr int kMostLines = 2000;
    //! How much of a message is kept, in characters.
    static constexpr qsizetype kLongestText = 4096;
    //! What is kept of the message, with a note when that is not all.
    static constexpr int kWholeTextRole = Qt::UserRole;

    explicit TrafficModel(QObject* parent = nullptr);

    //! Adds a message soon, together with others. \a way: who sent it to whom. \a task: what it is about.
    //! \a text: the message, or the beginning of one of \a length characters.
    void add(QString const& way, QString const& task, QString const& text, qsizetype length);
    void clear();

    int rowCount(QModelIndex const& parent = {}) const override;
    int columnCount(QModelIndex const& parent = {}) const override;
    QVariant data(QModelIndex const& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    struct Line
    {
        QTime time;
        QString way;
        QString task;
        QString text;
        qsizetype length = 0;
    };

    void takeIn();

    QList<Line> lines;
    QList<Line> waiting;
    QTimer takingIn;
};
