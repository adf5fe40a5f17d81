#pragma once

#include "devhost/window/TrafficFilter.h"
#include "devhost/window/TrafficModel.h"

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
    void addFrame(QString const& way, QString const& frame);
    void showDetails(QModelIndex const& current);
    void showCount();

    std::unique_ptr<Ui::TrafficView> ui;
    TrafficModel model;
    TrafficFilter filter;
    DevHost* devHost = nullptr;
    QList<QMetaObject::Connection> connections;
    //! The newest line was in sight before more came.
    bool atEnd = true;
};
