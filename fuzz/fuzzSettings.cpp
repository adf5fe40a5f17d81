// A settings document, of whatever version, through the functions that read, convert and write it. The input
// is the document.

#include "actions/SlobsSettings.h"
#include "actions/SlobsSettingsKeys.h"
#include "fuzz/Fuzz.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

SlobsSettings::Document const defaults{{u"off"_s, u"on"_s}, {u"/off.png"_s, u"/on.png"_s}, {}, {}};

QStringList const ours{u"version"_s, u"titlelist"_s, u"iconlist"_s, ZoDisplayViewAttribute::pluginPayloadKey,
    u"title"_s, u"states"_s, u"item_id"_s, u"item_name"_s, u"payload"_s, SlobsSettingsKeys::kSceneItemId,
    SlobsSettingsKeys::kSceneItemName, SlobsSettingsKeys::kAudioSourceId,
    SlobsSettingsKeys::kAudioSourceName};

void check(QJsonObject const& json, QJsonObject const& converted)
{
    auto const document = SlobsSettings::read(converted, defaults);
    Fuzz::require(document.titles.size() >= 2 && document.icons.size() >= 2, "no state is lost");
    auto const first = SlobsSettings::write(document);
    Fuzz::require(SlobsSettings::versionOf(first) == SlobsSettings::kVersion, "what is written is current");
    Fuzz::require(SlobsSettings::write(SlobsSettings::read(first, defaults)) == first,
        "what was saved and loaded is saved the same");
    auto const keys = json.keys();
    Fuzz::require(std::ranges::all_of(keys,
                      [&](QString const& key) { return ours.contains(key) || first[key] == json[key]; }),
        "what nobody here knows is kept");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    auto const json = QJsonDocument::fromJson(Fuzz::bytes(data, size).toByteArray()).object();
    check(json, json);
    for (auto const convert : {SlobsSettings::convertItem, SlobsSettings::convertAudioSource}) {
        check(json, SlobsSettings::convertLists(convert(json)));
    }
    return 0;
}
