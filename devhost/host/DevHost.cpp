#include "devhost/host/DevHost.h"

#include "relay/ZoLumenProxy.h"
#include "relay/ZoMixerPluginDelegate.h"
#include "relay/ZoRemoteCommands.h"

#include <QCoreApplication>
#include <QHostAddress>
#include <QTcpSocket>

#include <utility>

using namespace Qt::StringLiterals;

DevHost::DevHost(QObject* parent) : QObject(parent)
{
    // Queued, for who hears of it may stop the service that has just published.
    connect(
        &relayServer, &RelayServer::published, this,
        [this](QString const& subject, QJsonObject const& payload) {
            if (subject == ZoRemoteSubjects::kSubjectStreamlabsResponse) {
                emit publicationReceived(payload);
            }
        },
        Qt::QueuedConnection);
    connect(&relayServer, &RelayServer::ledChanged, this, &DevHost::ledChanged, Qt::QueuedConnection);
}

DevHost::~DevHost()
{
    stop();
}

bool DevHost::start(Options const& options)
{
    startOptions = options;
    if (usesStandIn() && !streamlabs.start()) {
        problem = tr("The stand-in for Streamlabs Desktop cannot listen.");
        return false;
    }
    if (!relayServer.listen()) {
        problem = tr("The relay cannot listen.");
        return false;
    }
    // Where the interface is down, everything would wait for ever and say nothing.
    constexpr int kPatience = 3000;
    QTcpSocket probe;
    probe.connectToHost(QHostAddress::LocalHost, relayServer.port());
    if (!probe.waitForConnected(kPatience)) {
        problem =
            tr("Nothing can be reached on 127.0.0.1 (%1). Is the loopback interface up? (ip link set lo up)")
                .arg(probe.errorString());
        return false;
    }
    if (!pluginHost.load({options.pluginFile.isEmpty() ? builtPluginFile() : options.pluginFile,
            relayServer.port(), options.configDir, options.language})) {
        problem = pluginHost.errorString();
        return false;
    }

    placedKeys = std::make_unique<Console>(options.keepsKeys ? options.configDir : QString());

    ZoLumenProxy::getInstance().port = relayServer.port();
    client = std::make_unique<ZoMixerPluginDelegate>();
    connect(client.get(), &ZoMixerPluginDelegate::response, this, &DevHost::onClientMessage);
    client->connectToServer();
    return true;
}

bool DevHost::stop()
{
    pluginHost.stopService();
    client.reset();
    placedKeys.reset();
    return pluginHost.unload();
}

void DevHost::sendTask(QString const& name, QJsonObject arguments)
{
    arguments.insert("task"_L1, ZoRemoteCommands::kSlobsServiceTask);
    arguments.insert("event"_L1, name);
    client->sendTextMessage(arguments);
}

DevHost::Desktop DevHost::desktop() const
{
    return startOptions.desktop.value_or(Desktop{streamlabs.lastPort(), streamlabs.token()});
}

void DevHost::connectDesktop(QString const& token)
{
    pluginHost.connectDesktop(token.isEmpty() ? desktop().token : token, desktop().port);
}

void DevHost::reconnectDesktop(QString const& token)
{
    pluginHost.reconnectDesktop(token.isEmpty() ? desktop().token : token, desktop().port);
}

void DevHost::onClientMessage(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == ZoRemoteCommands::kRegisterToServer) {
        client->subscribeSubject(ZoRemoteSubjects::kSubjectStreamlabsResponse);
    } else if (task == ZoRemoteCommands::kSubscribeSubject) {
        pluginHost.startService(relayServer, desktop().token, desktop().port);
        placedKeys->setPackage(pluginHost.package()); // its keys ask the service at once
        emit ready();
    } else {
        placedKeys->checkFacesSoon(); // the keys have heard it as well
    }
}

QString DevHost::builtPluginFile()
{
    return QCoreApplication::applicationDirPath() + u"/../lib/Streamlabs"_s;
}
