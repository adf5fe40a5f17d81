#include "relay/ZoMixerPluginDelegate.h"

#include "relay/ZoLumenProxy.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QJsonDocument>
#include <QUrl>

using namespace Qt::StringLiterals;
using namespace ZoRemoteCommands;

ZoMixerPluginDelegate::ZoMixerPluginDelegate(QObject* parent) : QObject(parent)
{
    socket.on(&QWebSocket::connected, this, [this] { onConnected(); });
}

ZoMixerPluginDelegate::~ZoMixerPluginDelegate() = default;

void ZoMixerPluginDelegate::connectToServer()
{
    socket.open(QUrl(u"ws://127.0.0.1:%1"_s.arg(ZoLumenProxy::getInstance().port)));
}

void ZoMixerPluginDelegate::sendTextMessage(QJsonObject const& message)
{
    socket->sendTextMessage(QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
}

// Connected anew each time and not unique: after n connections every message is handled n times. The host's
// own users of this class make a new delegate to reconnect and count on it.
void ZoMixerPluginDelegate::onConnected()
{
    socket.on(
        &QWebSocket::textMessageReceived, this, [this](QString const& text) { onTextMessageReceived(text); });
}

void ZoMixerPluginDelegate::onTextMessageReceived(QString const& text)
{
    auto const document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isObject()) {
        emit response(document.object());
        return;
    }
    qDebug() << "[MixerPluginDelegate][ConnectToServer]Error" << document.toJson(QJsonDocument::Indented);
    emit response({{u"error"_s, u"Content was broken"_s}});
}

void ZoMixerPluginDelegate::subscribeSubjects(QList<QString> const& subjects)
{
    sendTextMessage({{u"task"_s, kSubscribeSubjects}, {u"subjects"_s, QJsonArray::fromStringList(subjects)}});
}

void ZoMixerPluginDelegate::subscribeSubject(QString const& subject)
{
    sendTextMessage({{u"task"_s, kSubscribeSubject}, {u"subject"_s, subject}});
}

void ZoMixerPluginDelegate::subjectSendMessage(QString const& subject)
{
    sendTextMessage({{u"task"_s, kSubjectSendMessage}, {u"subject"_s, subject}});
}

void ZoMixerPluginDelegate::queryMixerMute()
{
    sendTextMessage({{u"task"_s, kQueryMixerMute}});
}

void ZoMixerPluginDelegate::updateMixerMute(bool muted, QJsonArray const& mixers)
{
    sendTextMessage({{u"task"_s, kUpdateMixerMute}, {u"muted"_s, muted}, {u"mixers"_s, mixers}});
}

void ZoMixerPluginDelegate::queryMixerVolume()
{
    sendTextMessage({{u"task"_s, kQueryMixerVolume}});
}

void ZoMixerPluginDelegate::updateMixerVolume(int deck, int category, int volume)
{
    sendTextMessage({{u"task"_s, kUpdateMixerVolume}, {u"deck"_s, deck}, {u"category"_s, category},
        {u"volume"_s, volume}});
}

void ZoMixerPluginDelegate::queryMixerEffect()
{
    sendTextMessage({{u"task"_s, kQueryMixerEffect}});
}

void ZoMixerPluginDelegate::updateMixerEffect(bool enable, int effectType, int presetId)
{
    sendTextMessage({{u"task"_s, kUpdateMixerEffect}, {u"enable"_s, enable}, {u"effectType"_s, effectType},
        {u"presetId"_s, presetId}});
}

void ZoMixerPluginDelegate::queryHeadphoneOutput()
{
    sendTextMessage({{u"task"_s, kQueryHeadphoneOutput}});
}

void ZoMixerPluginDelegate::updateHeadphoneOutput(bool on)
{
    sendTextMessage({{u"task"_s, kUpdateHeadphoneOutput}, {u"on"_s, on}});
}

void ZoMixerPluginDelegate::queryMonitor()
{
    sendTextMessage({{u"task"_s, kQueryMonitor}});
}

void ZoMixerPluginDelegate::updateMonitor(bool on)
{
    sendTextMessage({{u"task"_s, kUpdateMonitor}, {u"on"_s, on}});
}

void ZoMixerPluginDelegate::updatePageSwitch(int page)
{
    sendTextMessage({{u"task"_s, kUpdatePageSwitch}, {u"page"_s, page}});
}

void ZoMixerPluginDelegate::queryHotkeyProfile()
{
    sendTextMessage({{u"task"_s, kQueryHotkeyProfile}});
}

void ZoMixerPluginDelegate::updateHotkeyProfile(QString const& profileId)
{
    sendTextMessage({{u"task"_s, kUpdateHotkeyProfile}, {u"profileId"_s, profileId}});
}

void ZoMixerPluginDelegate::queryMixerProfile()
{
    sendTextMessage({{u"task"_s, kQueryMixerProfile}});
}

void ZoMixerPluginDelegate::updateMixerProfile(QString const& profileId)
{
    sendTextMessage({{u"task"_s, kUpdateMixerProfile}, {u"profileId"_s, profileId}});
}

void ZoMixerPluginDelegate::enterGroup(QString const& id)
{
    sendTextMessage({{u"task"_s, kEnterGroup}, {u"id"_s, id}});
}

void ZoMixerPluginDelegate::updateFunctionKeyLedLevel(QString const& sender, int level)
{
    sendTextMessage({{u"task"_s, kUpdateFunctionKeyLedLevel}, {u"sender"_s, sender}, {u"level"_s, level}});
}

void ZoMixerPluginDelegate::updateFunctionKeyLedAppControl(
    QString const& sender, QString const& appName, QString const& functionName, bool status)
{
    sendTextMessage({{u"task"_s, kUpdateFunctionKeyLedAppControl}, {u"sender"_s, sender},
        {u"appName"_s, appName}, {u"functionName"_s, functionName}, {u"status"_s, status}});
}

void ZoMixerPluginDelegate::updateFunctionKeyImageColor(QString const& sender)
{
    sendTextMessage({{u"task"_s, kUpdateFunctionKeyImageColor}, {u"sender"_s, sender}});
}

void ZoMixerPluginDelegate::turnOffPanel()
{
    sendTextMessage({{u"task"_s, kTurnOffPanel}});
}

void ZoMixerPluginDelegate::queryPageNumber()
{
    sendTextMessage({{u"task"_s, kQueryPageIndicatorNumber}});
}
