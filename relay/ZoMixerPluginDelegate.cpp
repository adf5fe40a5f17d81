#include "relay/ZoMixerPluginDelegate.h"

#include "relay/ZoLumenProxy.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QJsonDocument>
#include <QUrl>

using namespace Qt::StringLiterals;
using namespace ZoRemoteCommands;
using namespace ZoRemoteFields;

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

void ZoMixerPluginDelegate::sendCommand(QString const& command, QJsonObject arguments)
{
    arguments.insert(kFieldTask, command);
    sendTextMessage(arguments);
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
    sendCommand(kSubscribeSubjects, {{kFieldSubjects, QJsonArray::fromStringList(subjects)}});
}

void ZoMixerPluginDelegate::subscribeSubject(QString const& subject)
{
    sendCommand(kSubscribeSubject, {{kFieldSubject, subject}});
}

void ZoMixerPluginDelegate::subjectSendMessage(QString const& subject)
{
    sendCommand(kSubjectSendMessage, {{kFieldSubject, subject}});
}

void ZoMixerPluginDelegate::updateMixerMute(bool muted, QJsonArray const& mixers)
{
    sendCommand(kUpdateMixerMute, {{u"muted"_s, muted}, {u"mixers"_s, mixers}});
}

void ZoMixerPluginDelegate::updateMixerVolume(int deck, int category, int volume)
{
    sendCommand(kUpdateMixerVolume, {{u"deck"_s, deck}, {u"category"_s, category}, {u"volume"_s, volume}});
}

void ZoMixerPluginDelegate::updateMixerEffect(bool enable, int effectType, int presetId)
{
    sendCommand(kUpdateMixerEffect,
        {{u"enable"_s, enable}, {u"effectType"_s, effectType}, {u"presetId"_s, presetId}});
}

void ZoMixerPluginDelegate::updateHeadphoneOutput(bool on)
{
    sendCommand(kUpdateHeadphoneOutput, {{u"on"_s, on}});
}

void ZoMixerPluginDelegate::updateMonitor(bool on)
{
    sendCommand(kUpdateMonitor, {{u"on"_s, on}});
}

void ZoMixerPluginDelegate::updatePageSwitch(int page)
{
    sendCommand(kUpdatePageSwitch, {{u"page"_s, page}});
}

void ZoMixerPluginDelegate::updateHotkeyProfile(QString const& profileId)
{
    sendCommand(kUpdateHotkeyProfile, {{u"profileId"_s, profileId}});
}

void ZoMixerPluginDelegate::updateMixerProfile(QString const& profileId)
{
    sendCommand(kUpdateMixerProfile, {{u"profileId"_s, profileId}});
}

void ZoMixerPluginDelegate::enterGroup(QString const& id)
{
    sendCommand(kEnterGroup, {{kFieldId, id}});
}

void ZoMixerPluginDelegate::updateFunctionKeyLedLevel(QString const& sender, int level)
{
    sendCommand(kUpdateFunctionKeyLedLevel, {{kFieldSender, sender}, {u"level"_s, level}});
}

void ZoMixerPluginDelegate::updateFunctionKeyLedAppControl(
    QString const& sender, QString const& appName, QString const& functionName, bool status)
{
    sendTextMessage(toKeyLedAppControl(sender, appName, functionName, status));
}

void ZoMixerPluginDelegate::updateFunctionKeyImageColor(QString const& sender)
{
    sendCommand(kUpdateFunctionKeyImageColor, {{kFieldSender, sender}});
}
