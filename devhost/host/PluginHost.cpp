#include "devhost/host/PluginHost.h"

#include "devhost/fakes/DevHostLog.h"
#include "plugin/IBuiltInPackageLibrary.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace Qt::StringLiterals;

PluginHost::PluginHost(QObject* parent) : QObject(parent)
{
    // A library with a missing symbol is refused now, and does not fail in the middle of a call.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
}

PluginHost::~PluginHost()
{
    unload();
}

bool PluginHost::load(Parameters const& parameters)
{
    unload();
    problem.clear();
    library.setFileName(QFileInfo(parameters.file).absoluteFilePath());
    if (!library.load()) {
        return fail(library.errorString());
    }

    using Sdk = int (*)();
    using Instance = IBuiltInPackageLibrary* (*)();
    auto const sdk = reinterpret_cast<Sdk>(library.resolve("sdk"));
    auto const instance = reinterpret_cast<Instance>(library.resolve("instance"));
    if (!sdk || !instance) {
        return fail(tr("%1 is not an action package: it exports no function \"%2\".")
                .arg(library.fileName(), sdk ? u"instance"_s : u"sdk"_s));
    }
    if (int const version = sdk(); version != kSdkVersion) {
        return fail(tr("%1 speaks version %2 of the package interface, this host speaks %3.")
                .arg(library.fileName(), QString::number(version), QString::number(kSdkVersion)));
    }

    loadedPackage.reset(instance());
    if (!loadedPackage) {
        return fail(tr("%1 made no package object.").arg(library.fileName()));
    }
    bool const ready = loadedPackage->init(
        {{u"port"_s, parameters.relayPort}, {u"configDir"_s, parameters.configDir}, {u"cloudType"_s, 0}});
    if (!ready || !loadedPackage->loadConfig()) {
        return fail(tr("The package in %1 refused to start.").arg(library.fileName()));
    }
    if (auto* translator = loadedPackage->translate(parameters.language)) {
        QCoreApplication::installTranslator(translator);
    } else {
        qCWarning(devHostLog) << "The package has no texts in" << parameters.language;
    }
    labelTexts = loadedPackage->mapping();
    return true;
}

bool PluginHost::unload()
{
    if (loadedPackage) {
        loadedPackage->stopService();
        loadedPackage.reset();
    }
    return !library.isLoaded() || library.unload();
}

bool PluginHost::fail(QString const& reason)
{
    problem = reason;
    unload();
    return false;
}

void PluginHost::startService(ZoInterfaceRcc& relay, QString const& token, int port)
{
    if (loadedPackage) {
        loadedPackage->startService(&relay, {{u"token"_s, token}, {u"port"_s, port}});
    }
}

void PluginHost::stopService()
{
    if (loadedPackage) {
        loadedPackage->stopService();
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
    if (loadedPackage) {
        QJsonObject reply;
        loadedPackage->onTask({{u"task"_s, name}, {u"payload"_s, payload}}, reply);
    }
}
