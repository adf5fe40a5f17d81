#pragma once

#include "devhost/fakes/RelayServer.h"
#include "devhost/fakes/StreamlabsStandIn.h"
#include "devhost/host/Console.h"
#include "devhost/host/PluginHost.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class ZoMixerPluginDelegate;

//! A whole console host but for the window: the keys, the relay, the loaded package with its service, a relay
//! client that sends it tasks, and Streamlabs Desktop, pretended or real.
//!
//! After `start` the pieces come up in the order of a real host, and the service starts once the client
//! hears. Destruction takes everything down in reverse.
class DevHost : public QObject
{
    Q_OBJECT

public:
    //! Where a running Streamlabs Desktop listens for remote control.
    struct Desktop
    {
        int port = 0;
        QString token;
    };

    struct Options
    {
        //! The package library; empty for the one that was built with this program.
        QString pluginFile;
        //! Folder for package data and for the keys, absolute.
        QString configDir;
        //! Whether the keys of the last time are placed again, and those of this time kept.
        bool keepsKeys = true;
        //! Language code such as "en_US".
        QString language = QString::fromLatin1("en_US");
        //! Without a value the stand-in is used.
        std::optional<Desktop> desktop;
    };

    explicit DevHost(QObject* parent = nullptr);
    ~DevHost() override;

    //! False when the library or the relay cannot be used; `errorString` says why.
    bool start(Options const& options);
    QString errorString() const { return problem; }
    //! Stops the service and unloads the package. False when the system kept the library in memory.
    bool stop();

    RelayServer& relay() { return relayServer; }
    PluginHost& plugin() { return pluginHost; }
    //! Exists once started, and has its keys when `ready`.
    Console& console() { return *placedKeys; }
    //! Not running when a real Streamlabs Desktop is used.
    StreamlabsStandIn& standIn() { return streamlabs; }
    bool usesStandIn() const { return !startOptions.desktop; }

    //! Sends the service a task through the relay, {"task": the relay's command, "event": \a name, …\a
    //! arguments}.
    void sendTask(QString const& name, QJsonObject arguments);
    //! With the token of the Streamlabs Desktop in use, unless another one is given.
    void connectDesktop(QString const& token = {});
    void reconnectDesktop(QString const& token = {});
    //! Where the Streamlabs Desktop that is used listens, with the token that it has now.
    Desktop desktop() const;

    //! The library that was built with this program.
    static QString builtPluginFile();

signals:
    //! The client hears, the service has been started, and the keys are there.
    void ready();
    //! Everything that the service publishes and every LED that it switches, in this order.
    void publicationReceived(QJsonObject const& payload);
    void ledChanged(QString const& app, QString const& function, bool on);

private:
    void onClientMessage(QJsonObject const& message);

    Options startOptions;
    StreamlabsStandIn streamlabs;
    RelayServer relayServer;
    PluginHost pluginHost;
    std::unique_ptr<Console> placedKeys;
    std::unique_ptr<ZoMixerPluginDelegate> client;
    QString problem;
};
