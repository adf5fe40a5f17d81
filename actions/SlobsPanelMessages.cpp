#include "actions/SlobsPanelMessages.h"

#include "relay/ZoRemoteCommands.h"
#include "streamlabs/SlobsMessages.h"

using namespace Qt::StringLiterals;
using namespace SlobsAgentPrivate;
using ZoRemoteFields::kFieldTask;

namespace {

constexpr auto kPayload = "payload"_L1;
constexpr auto kEvent = "event"_L1;
constexpr auto kOpenSettingsAuth = "openSettingsAuth"_L1;

} // namespace

QJsonObject SlobsPanelMessages::toTask(QString const& name)
{
    return {{kFieldTask, name}};
}

QJsonObject SlobsPanelMessages::toGetSettings(QJsonObject const& settings)
{
    return {{kFieldTask, kCcGetWidgetSettings}, {kPayload, settings}};
}

QJsonObject SlobsPanelMessages::toSetSettings(QJsonObject const& settings)
{
    return {{kFieldTask, kCcSetWidgetSettings}, {kPayload, settings}};
}

QJsonObject SlobsPanelMessages::settingsOf(QJsonObject const& message)
{
    return message.value(kPayload).toObject();
}

QJsonObject SlobsPanelMessages::toOpenLogin()
{
    return {{kEvent, kOpenSettingsAuth}};
}

bool SlobsPanelMessages::isOpenLogin(QJsonObject const& message)
{
    return message.value(kEvent) == kOpenSettingsAuth;
}
