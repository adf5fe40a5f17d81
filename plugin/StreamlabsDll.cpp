#include "plugin/StreamlabsDll.h"

#include "actions/SlobsAudioWidget.h"
#include "actions/SlobsRecordWidget.h"
#include "actions/SlobsSceneWidget.h"
#include "actions/SlobsSourceWidget.h"
#include "actions/SlobsStreamWidget.h"
#include "plugin/MekPluginCategories.h"
#include "streamlabs/StreamlabsService.h"

#include <QDebug>

#include <utility>

using namespace Qt::StringLiterals;
using namespace MekPluginCategories;

namespace {

template <typename Action>
ZOPlugin* make()
{
    return new Action;
}

} // namespace

class StreamlabsDll::Impl
{
public:
    //! \a payload: {"token": string, "port": number}. Nothing when no service runs.
    void connect(QJsonObject const& payload)
    {
        if (service) {
            service->connectSlobs(payload.value("token"_L1).toString(), payload.value("port"_L1).toInt());
        }
    }

    void close()
    {
        if (service) {
            service->closeSlobs();
        }
    }

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
    constexpr char const* labels[] = {
        QT_TR_NOOP("LAB_SIDEBAR_GROUP_STLOBS"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_MIXER_AUDIO"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_RECORD"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_SCENE"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_SOURCE"),
        QT_TR_NOOP("LAB_SIDEBAR_STLOBS_STREAM"),
    };
    QMap<QString, QString> texts;
    for (auto const* label : labels) {
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
    stopService();
    qDebug() << "StreamlabsDll::startService" << params;
    d->service = std::make_unique<StreamlabsService>(nullptr);
    d->service->init(rcc);
    d->connect(params);
}

void StreamlabsDll::stopService()
{
    qDebug() << "StreamlabsDll::stopService" << d->service.get();
    if (!d->service) {
        return;
    }
    d->service->closeSlobs();
    d->service->deinit();
    d->service.reset();
}

void StreamlabsDll::onTask(QJsonObject const& task, [[maybe_unused]] QJsonObject& reply)
{
    qDebug() << "StreamlabsDll::onMessage" << task;
    QString const name = task.value("task"_L1).toString();
    if (name == "reconnect"_L1) {
        d->close();
        d->connect(task.value("payload"_L1).toObject());
    } else if (name == "disconnect"_L1) {
        d->close();
    } else if (name == "connect"_L1) {
        d->connect(task.value("payload"_L1).toObject());
    }
}
