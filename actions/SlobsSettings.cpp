#include "actions/SlobsSettings.h"

#include "actions/SlobsSettingsKeys.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace SlobsSettingsKeys;

namespace {

constexpr auto kVersionKey = "version"_L1;
constexpr auto kTitles = "titlelist"_L1;
constexpr auto kIcons = "iconlist"_L1;

//! \a json, an array of texts, and the rest of \a list where that is longer.
QStringList over(QStringList const& list, QJsonValue const& json)
{
    QStringList texts;
    for (auto const& element : json.toArray()) {
        texts.append(element.toString());
    }
    return texts + list.mid(texts.size());
}

} // namespace

int SlobsSettings::versionOf(QJsonObject const& json)
{
    return json.value(kVersionKey).toInt();
}

SlobsSettings::Document SlobsSettings::read(QJsonObject const& json, Document const& defaults)
{
    QJsonObject const look = json.value(ZoDisplayViewAttribute::pluginPayloadKey).toObject();
    return {over(defaults.titles, json.value(kTitles)), over(defaults.icons, json.value(kIcons)),
        ZoDisplayViewAttribute::fromJson(look), json};
}

QJsonObject SlobsSettings::write(Document const& document)
{
    QJsonObject json = document.source;
    json.insert(kVersionKey, kVersion);
    json.insert(kTitles, QJsonArray::fromStringList(document.titles));
    json.insert(kIcons, QJsonArray::fromStringList(document.icons));
    QJsonObject look = json.value(ZoDisplayViewAttribute::pluginPayloadKey).toObject();
    QJsonObject const ours = ZoDisplayViewAttribute::toJson(document.look);
    for (auto member = ours.begin(); member != ours.end(); ++member) {
        look.insert(member.key(), member.value());
    }
    json.insert(ZoDisplayViewAttribute::pluginPayloadKey, look);
    return json;
}

bool SlobsSettings::replaceAt(
    Document& document, QStringList Document::* list, int index, QString const& text)
{
    qsizetype const states = std::max(document.titles.size(), document.icons.size());
    if (index < 0 || index >= states) {
        return false;
    }
    (document.*list).resize(states);
    (document.*list)[index] = text;
    return true;
}

QJsonObject SlobsSettings::convertLists(QJsonObject json)
{
    QJsonArray images;
    for (auto const& state : json.take("states"_L1).toArray()) {
        images.append(state.toObject().value("Image"_L1).toString());
    }
    json.insert(kIcons, QJsonArray::fromStringList(over(over({}, json.value(kIcons)), images)));
    json.insert(
        kTitles, QJsonArray::fromStringList(over(over({}, json.value(kTitles)), json.take("title"_L1))));
    return json;
}

QJsonObject SlobsSettings::convertItem(QJsonObject json)
{
    constexpr auto kLegacyId = "item_id"_L1;
    if (json.contains(kLegacyId)) { // what has no version but today's keys keeps its target
        json.insert(kSceneItemId, json.take(kLegacyId));
        json.insert(kSceneItemName, json.take("item_name"_L1));
    }
    return json;
}

QJsonObject SlobsSettings::convertAudioSource(QJsonObject json)
{
    constexpr auto kLegacyPayload = "payload"_L1;
    if (json.value(kLegacyPayload).isObject()) { // as above
        QJsonObject legacy = json.take(kLegacyPayload).toObject();
        json.insert(kAudioSourceId, legacy.take("audioSource"_L1));
        json.insert(kAudioSourceName, legacy.take(kAudioSourceName));
        if (!legacy.isEmpty()) { // whatever else it holds is not ours to drop
            json.insert(kLegacyPayload, legacy);
        }
    }
    return json;
}
