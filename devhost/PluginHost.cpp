#include "devhost/PluginHost.h"

#include "devhost/DevHostLog.h"
#include "plugin/IBuiltInPackageLibrary.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace Qt::StringLiterals;

PluginHost::PluginHost(QObject* parent) : QObject(parent)
{
    // A library with a missing symbol is refused now, and does not fail in the middle of a call.
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
}

PluginHost::~PluginHost()
{
    unload();
}

bool PluginHost::load(Parameters const& parameters)
{
    unload();
    m_errorString.clear();
    m_library.setFileName(QFileInfo(parameters.file).absoluteFilePath());
    if (!m_library.load()) {
        return fail(m_library.errorString());
    }

    using Sdk = int (*)();
    using Instance = IBuiltInPackageLibrary* (*)();
    auto const sdk = reinterpret_cast<Sdk>(m_library.resolve("sdk"));
    auto const instance = reinterpret_cast<Instance>(m_library.resolve("instance"));
    if (!sdk || !instance) {
        return fail(tr("%1 is not an action package: it exports no function \"%2\".")
                .arg(m_library.fileName(), sdk ? u"instance"_s : u"sdk"_s));
    }
    if (int const version = sdk(); version != sdkVersion) {
        return fail(tr("%1 speaks version %2 of the package interface, this host speaks %3.")
                .arg(m_library.fileName(), QString::number(version), QString::number(sdkVersion)));
    }

    m_package.reset(instance());
    if (!m_package) {
        return fail(tr("%1 made no package object.").arg(m_library.fileName()));
    }
    bool const ready = m_package->init(
        {{u"port"_s, parameters.relayPort}, {u"configDir"_s, parameters.configDir}, {u"cloudType"_s, 0}});
    if (!ready || !m_package->loadConfig()) {
        return fail(tr("The package in %1 refused to start.").arg(m_library.fileName()));
    }
    if (auto* translator = m_package->translate(parameters.language)) {
        QCoreApplication::installTranslator(translator);
    } else {
        qCWarning(devHostLog) << "The package has no texts in" << parameters.language;
    }
    m_labels = m_package->mapping();
    return true;
}

bool PluginHost::unload()
{
    if (m_package) {
        m_package->stopService();
        m_package.reset();
    }
    return !m_library.isLoaded() || m_library.unload();
}

bool PluginHost::fail(QString const& reason)
{
    m_errorString = reason;
    unload();
    return false;
}

void PluginHost::startService(ZoInterfaceRcc& relay, QString const& token, int port)
{
    if (m_package) {
        m_package->startService(&relay, {{u"token"_s, token}, {u"port"_s, port}});
    }
}

void PluginHost::stopService()
{
    if (m_package) {
        m_package->stopService();
    }
}

void PluginHost::connectDesktop(QString const& token, int port)
{
    sendTask(u"connect"_s, {{u"token"_s, token}, {u"port"_s, port}});
}

void PluginHost::disconnectDesktop()
{
    sendTask(u"disconnect"_s, {});
}

void PluginHost::reconnectDesktop(QString const& token, int port)
{
    sendTask(u"reconnect"_s, {{u"token"_s, token}, {u"port"_s, port}});
}

void PluginHost::sendTask(QString const& name, QJsonObject const& payload)
{
    if (m_package) {
        QJsonObject reply;
        m_package->onTask({{u"task"_s, name}, {u"payload"_s, payload}}, reply);
    }
}
