#pragma once

#include "devhost/window/TrafficFilter.h"
#include "devhost/window/TrafficModel.h"

#include <QHash>
#include <QWidget>

#include <memory>

class DevHost;

namespace Ui {
class TrafficView;
}

//! What goes over the host's two links: the relay, and the connection with the stand-in for Streamlabs
//! Desktop. It listens unless it is paused. The link to a running Streamlabs Desktop is the package's own and
//! cannot be heard.
class TrafficView : public QWidget
{
    Q_OBJECT

public:
    explicit TrafficView(QWidget* parent = nullptr);
    ~TrafficView() override;

    //! \a host knows already which Streamlabs Desktop it uses.
    void watch(DevHost& host);
    void focusFilter();

private:
    void listen(bool on);
    void addMessage(QString const& way, QString const& text);
    void addFrame(QString const& way, QString const& frame);
    QString nameOf(int client) const;
    //! What a message is about: its task, method or event. Answers are about what was asked.
    QString taskOf(QString const& text);
    void showDetails(QModelIndex const& current);
    void showCount();

    std::unique_ptr<Ui::TrafficView> ui;
    TrafficModel model;
    TrafficFilter filter;
    DevHost* devHost = nullptr;
    QList<QMetaObject::Connection> connections;
    //! Methods that were asked for and not answered yet, by the id of the request.
    QHash<QString, QString> asked;
    //! Newer lines come into sight, until one scrolls up.
    bool follows = true;
};
