#pragma once

#include "devhost/fakes/RelayServer.h"
#include "devhost/fakes/StreamlabsStandIn.h"
#include "devhost/host/Console.h"
#include "devhost/host/PluginHost.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonArray>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QWidget>

#include <chrono>

//! Runs the event loop until \a condition holds.
template <typename Condition>
void waitUntil(Condition const& condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

//! Runs the event loop for a time.
void settle(std::chrono::milliseconds time);
//! Until all that is under way in this process has been worked off.
void drain();
//! Resident memory, KiB.
double residentMemory();

//! What a host has, with the loaded library, its service connected, and a window for the faces. Other than
//! the development host it does not listen to what the service publishes: only the keys do.
class LoadedHost
{
public:
    static constexpr QSize kWindowSize{1300, 500};

    //! Its Streamlabs Desktop has a generated collection of that size with 20 audio devices, or the demo's
    //! when there are no \a scenes. With a \a port one of the same contents runs there, in another process.
    LoadedHost(int scenes, int items, quint16 port = 0);
    ~LoadedHost();
    LoadedHost(LoadedHost const&) = delete;
    LoadedHost& operator=(LoadedHost const&) = delete;

    void place(QString const& action, QJsonObject const& settings = {});
    //! A mix of all five actions on targets of the generated collection. \a item: what all Source keys, the
    //! last of 32 among them, show; otherwise each shows its own.
    void placeMix(int keys, QString const& item = {});
    void waitForSubscribers(int keys);

    StreamlabsStandIn desktop;
    RelayServer relay;
    PluginHost plugin;
    Console console{QString()};
    QWidget window;

private:
    QJsonArray sceneList;
    QJsonArray audioList;
};

//! Counts how often a widget has been painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }

    bool eventFilter(QObject* watched, QEvent* event) override;

    int painted = 0;
};
