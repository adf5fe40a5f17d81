#include "devhost/DevHost.h"

#include "relay/ZoLumenProxy.h"
#include "relay/ZoMixerPluginDelegate.h"
#include "relay/ZoRemoteCommands.h"

#include <QCoreApplication>

#include <utility>

using namespace Qt::StringLiterals;

DevHost::DevHost(QObject* parent) : QObject(parent)
{
    // Queued, for who hears of it may stop the service that has just published.
    connect(
        &m_relay, &RelayServer::published, this,
        [this](QString const& subject, QJsonObject const& payload) {
            if (subject == ZoRemoteSubjects::kSubjectStreamlabsResponse) {
                emit publicationReceived(payload);
            }
        },
        Qt::QueuedConnection);
    connect(&m_relay, &RelayServer::ledChanged, this, &DevHost::ledChanged, Qt::QueuedConnection);
}

DevHost::~DevHost()
{
    stop();
}

bool DevHost::start(Options const& options)
{
    m_options = options;
    if (usesStandIn() && !startStandIn()) {
        m_errorString = tr("The stand-in for Streamlabs Desktop cannot listen.");
        return false;
    }
    if (!m_relay.listen()) {
        m_errorString = tr("The relay cannot listen.");
        return false;
    }
    if (!m_plugin.load({options.pluginFile.isEmpty() ? builtPluginFile() : options.pluginFile, m_relay.port(),
            options.configDir, options.language})) {
        m_errorString = m_plugin.errorString();
        return false;
    }

    m_console = std::make_unique<Console>(options.keepsKeys ? options.configDir : QString());

    ZoLumenProxy::getInstance().port = m_relay.port();
    m_client = std::make_unique<ZoMixerPluginDelegate>();
    connect(m_client.get(), &ZoMixerPluginDelegate::response, this, &DevHost::onClientMessage);
    m_client->connectToServer();
    return true;
}

bool DevHost::stop()
{
    m_plugin.stopService();
    m_client.reset();
    m_console.reset();
    return m_plugin.unload();
}

bool DevHost::startStandIn()
{
    if (!m_standIn.start(m_standInPort)) {
        return false;
    }
    m_standInPort = m_standIn.port();
    return true;
}

void DevHost::sendTask(QString const& name, QJsonObject arguments)
{
    arguments.insert("task"_L1, ZoRemoteCommands::kSlobsServiceTask);
    arguments.insert("event"_L1, name);
    m_client->sendTextMessage(arguments);
}

DevHost::Desktop DevHost::desktop() const
{
    return m_options.desktop.value_or(Desktop{m_standInPort, m_standIn.token()});
}

void DevHost::connectDesktop(QString const& token)
{
    m_plugin.connectDesktop(token.isEmpty() ? desktop().token : token, desktop().port);
}

void DevHost::reconnectDesktop(QString const& token)
{
    m_plugin.reconnectDesktop(token.isEmpty() ? desktop().token : token, desktop().port);
}

void DevHost::onClientMessage(QJsonObject const& message)
{
    QString const task = message.value("task"_L1).toString();
    if (task == ZoRemoteCommands::kRegisterToServer) {
        m_client->subscribeSubject(ZoRemoteSubjects::kSubjectStreamlabsResponse);
    } else if (task == ZoRemoteCommands::kSubscribeSubject) {
        m_plugin.startService(m_relay, desktop().token, desktop().port);
        m_console->setPackage(m_plugin.package()); // its keys ask the service at once
        emit ready();
    } else {
        m_console->checkFacesSoon(); // the keys have heard it as well
    }
}

QString DevHost::builtPluginFile()
{
    return QCoreApplication::applicationDirPath() + u"/../lib/Streamlabs"_s;
}
