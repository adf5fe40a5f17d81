#include "plugin/StreamlabsDll.h"

#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "plugin/MekPluginCategories.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoRemoteCommands.h"
#include "streamlabs/StreamlabsService.h"

#include <QDebug>
#include <QPointer>

#include <utility>

using namespace Qt::StringLiterals;
using namespace MekPluginCategories;

namespace {

template <typename Action>
ZOPlugin* make()
{
    return new Action;
}

//! \a payload: {"token": string, "port": number}. Nothing when no service runs.
void connectSlobs(QPointer<StreamlabsService> const& service, QJsonObject const& payload)
{
    if (service) {
        service->connectSlobs(payload.value("token"_L1).toString(), payload.value("port"_L1).toInt());
    }
}

} // namespace

class StreamlabsDll::Impl
{
public:
    //! What the service tells the host may lead the host back here, to stop the service or to start another:
    //! this one may be gone when an operation of it returns, and so may the package.
    QPointer<StreamlabsService> running() const { return service.get(); }

    std::unique_ptr<StreamlabsService> service;
};

StreamlabsDll::StreamlabsDll(QObject* parent)
    : IBuiltInPackageLibrary(QString::fromLatin1("Streamlabs"), parent), d(std::make_unique<Impl>())
{}

StreamlabsDll::~StreamlabsDll()
{
    qDebug() << "StreamlabsDll::~StreamlabsDll()";
}

QMap<QString, QString> StreamlabsDll::mapping()
{
    constexpr char const* kLabels[] = {
        QT_TR_NOOP("LAB_SIDEBAR_GROUP_STLOBS"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_MIXER_AUDIO"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_RECORD"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_SCENE"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_SOURCE"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_STREAM"),
    };
    QMap<QString, QString> texts;
    for (auto const* label : kLabels) {
        texts.insert(QString::fromLatin1(label), tr(label));
    }
    return texts;
}

ZOPlugin* StreamlabsDll::makeWidget(QString const& actionId, int index)
{
    qDebug() << "[dll] makeInstance()" << actionId << index;

    using Maker = ZOPlugin* (*)();
    static std::pair<QString, Maker> const makers[] = {
        {kStreamlabsStream, make<SlobsStreamWidget>},
        {kStreamlabsRecord, make<SlobsRecordWidget>},
        {kStreamlabsScene, make<SlobsSceneWidget>},
        {kStreamlabsSource, make<SlobsSourceWidget>},
        {kStreamlabsAudio, make<SlobsAudioWidget>},
    };
    for (auto const& [id, maker] : makers) {
        if (id == actionId) {
            ZOPlugin* const action = maker();
            action->actionId = actionId;
            return action;
        }
    }
    return nullptr;
}

void StreamlabsDll::startService(ZoInterfaceRcc* rcc, QJsonObject const& params)
{
    QPointer const self(this);
    stopService();
    qDebug() << "StreamlabsDll::startService" << params;
    if (!self || d->service) {
        return; // deleted, or started with something newer, by who heard that the last one stopped
    }
    d->service = std::make_unique<StreamlabsService>(nullptr);
    auto const service = d->running();
    service->init(rcc);
    connectSlobs(service, params);
}

void StreamlabsDll::stopService()
{
    qDebug() << "StreamlabsDll::stopService" << d->service.get();
    auto const service = d->running();
    if (service) {
        service->closeSlobs();
    }
    if (service) {
        service->deinit();
    }
    if (service) {
        d->service.reset();
    }
}

void StreamlabsDll::onTask(QJsonObject const& task, [[maybe_unused]] QJsonObject& reply)
{
    qDebug() << "StreamlabsDll::onMessage" << task;
    auto const service = d->running();
    QString const name = task.value(ZoRemoteFields::kFieldTask).toString();
    QJsonObject const payload = task.value(MekZoPluginEventType::kFieldPayload).toObject();
    if (service && (name == "reconnect"_L1 || name == "disconnect"_L1)) {
        service->closeSlobs();
    }
    if (name == "reconnect"_L1 || name == "connect"_L1) {
        connectSlobs(service, payload);
    }
}
