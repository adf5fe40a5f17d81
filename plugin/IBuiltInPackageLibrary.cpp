#include "plugin/IBuiltInPackageLibrary.h"

#include "relay/ZoLumenProxy.h"

#include <QDebug>
#include <QFile>
#include <QJsonDocument>

#include <utility>

using namespace Qt::StringLiterals;

IBuiltInPackageLibrary::IBuiltInPackageLibrary(QString name, QObject* parent)
    : QObject(parent), packageName(std::move(name))
{}

IBuiltInPackageLibrary::~IBuiltInPackageLibrary() = default;

bool IBuiltInPackageLibrary::loadConfig()
{
    QString const path = u":/%1/CategoryConfig.json"_s.arg(packageName);
    QFile file(path);
    if (!file.exists()) {
        qCritical() << "Failed to find json file from bundle.Resources" << path;
        return false;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        qCritical() << "Failed to load json file from bundle.Resources";
        return false;
    }
    // Line breaks count as white space here, so none are left after this.
    QString const text = QString::fromUtf8(file.readAll().simplified());
    file.close();
    config = QJsonDocument::fromJson(text.toUtf8()).object();
    return true;
}

int IBuiltInPackageLibrary::versionCode()
{
    auto const library = config.value("library"_L1);
    return (library.isObject() ? library.toObject() : config).value("versionCode"_L1).toInt();
}

// The two fallbacks differ on purpose: hosts show "x.x.x" for a package that says nothing of its version, and
// an empty text for one whose "library" object leaves the name out.
QString IBuiltInPackageLibrary::versionName()
{
    auto const library = config.value("library"_L1);
    if (library.isObject()) {
        return library.toObject().value("versionName"_L1).toVariant().toString();
    }
    if (config.contains("versionName"_L1)) {
        return config.value("versionName"_L1).toVariant().toString();
    }
    return QString::fromLatin1("x.x.x");
}

QTranslator* IBuiltInPackageLibrary::translate(QString const& language)
{
    QString const path = u":/%1/language_%2.qm"_s.arg(packageName, language);
    // A failed load empties a translator, and the one in use must survive it: a scratch one goes first.
    if (QTranslator().load(path) && translator.load(path)) {
        return &translator;
    }
    qWarning() << "[dll] load translation failed" << packageName << language;
    return nullptr;
}

bool IBuiltInPackageLibrary::init(QJsonObject const& params)
{
    auto& proxy = ZoLumenProxy::getInstance();
    proxy.port = params.value("port"_L1).toInt();
    proxy.configDir = params.value("configDir"_L1).toString();
    // "cloudType" selects cloud end points, and no action of this package talks to one.
    return postInit();
}

void IBuiltInPackageLibrary::startService(
    [[maybe_unused]] ZoInterfaceRcc* rcc, [[maybe_unused]] QJsonObject const& params)
{}

void IBuiltInPackageLibrary::stopService() {}

QJsonObject IBuiltInPackageLibrary::list()
{
    return config;
}

void IBuiltInPackageLibrary::onTask(
    [[maybe_unused]] QJsonObject const& task, [[maybe_unused]] QJsonObject& reply)
{}

bool IBuiltInPackageLibrary::postInit()
{
    return true;
}
