#include "streamlabs/SceneListCache.h"
#include "streamlabs/StreamlabsApi.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

class tst_StreamlabsApi : public QObject
{
    Q_OBJECT

private slots:
    void buildsRequests_data();
    void buildsRequests();
    void sendsOneArgumentAsStringOrBool();
    void decodesRecords_data();
    void decodesRecords();
    void decodesLists();
    void encodesWhatItDecodes();
    void keepsTheEncodedScenesInStep();
};

void tst_StreamlabsApi::buildsRequests_data()
{
    QTest::addColumn<QJsonObject>("request");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QByteArray>("params");

    using Api = StreamlabsApi;
    auto const row = [](char const* method, QJsonObject const& request, QByteArray const& params) {
        QTest::addRow("%s %s", method, params.constData())
            << request << QString::fromLatin1(method) << params;
    };
    QByteArray const streaming = R"({"resource":"StreamingService","args":[]})";
    QByteArray const scenes = R"({"resource":"ScenesService","args":[]})";
    QByteArray const collections = R"({"resource":"SceneCollectionsService","args":[]})";
    QByteArray const sources = R"({"resource":"SourcesService","args":[]})";
    row("auth", Api::makeAuthObject(u"t'k"_s), R"({"resource":"TcpServerService","args":["t'k"]})");
    row("getModel", Api::makeQueryModelObject(), streaming);
    row("toggleStreaming", Api::makeToggleStreamObject(), streaming);
    row("toggleRecording", Api::makeToggleRecordObject(), streaming);
    row("streamingStatusChange", Api::makeStreamStatusSubscription(), streaming);
    row("recordingStatusChange", Api::makeRecordStatusSubscription(), streaming);
    row("getScenes", Api::makeGetSceneListObject(), scenes);
    row("activeSceneId", Api::makeGetActiveSceneObject(), scenes);
    row("makeSceneActive", Api::makeSetActiveSceneObject(u"s1"_s),
        R"({"resource":"ScenesService","args":["s1"]})");
    row("setVisibility", Api::makeSetSourceVisibleObject(u"s1"_s, u"i1"_s, u"src1"_s, false),
        R"({"resource":"SceneItem['s1', 'i1', 'src1']","args":[false]})");
    row("setVisibility", Api::makeSetSourceVisibleObject(u"%2"_s, u"%3"_s, u"%1"_s, true),
        R"({"resource":"SceneItem['%2', '%3', '%1']","args":[true]})");
    row("collections", Api::makeGetCollectionListObject(), collections);
    row("fetchSceneCollectionsSchema", Api::makeGetCollectionSchemaObject(), collections);
    row("getSources", Api::makeGetAudioListObject({}), R"({"resource":"AudioService","args":[]})");
    row("getSourcesForScene", Api::makeGetAudioListObject(u"s1"_s),
        R"({"resource":"AudioService","args":["s1"]})");
    row("setMuted", Api::makeSetAudioMuteObject(u"a1"_s, true),
        R"({"resource":"AudioSource['a1']","args":[true]})");
    row("sceneAdded", Api::makeSceneAddSubscription(), scenes);
    row("sceneRemoved", Api::makeSceneRemoveSubscription(), scenes);
    row("sceneSwitched", Api::makeSceneSwitchSubscription(), scenes);
    row("itemAdded", Api::makeSceneItemAddSubscription(), scenes);
    row("itemRemoved", Api::makeSceneItemRemoveSubscription(), scenes);
    row("itemUpdated", Api::makeSceneItemUpdateSubscription(), scenes);
    row("collectionAdded", Api::makeCollectionAddSubscription(), collections);
    row("collectionRemoved", Api::makeCollectionRemoveSubscription(), collections);
    row("collectionSwitched", Api::makeCollectionSwitchSubscription(), collections);
    row("sourceAdded", Api::makeSourceAddSubscription(), sources);
    row("sourceRemoved", Api::makeSourceRemoveSubscription(), sources);
    row("sourceUpdated", Api::makeSourceUpdateSubscription(), sources);
}

void tst_StreamlabsApi::buildsRequests()
{
    QFETCH(QJsonObject, request);
    QFETCH(QString, method);
    QFETCH(QByteArray, params);

    QCOMPARE(request.size(), 3);
    QCOMPARE(request.value("jsonrpc"_L1).toString(), u"2.0"_s);
    QCOMPARE(request.value("method"_L1).toString(), method);
    QCOMPARE(request.value("params"_L1).toObject(), json(params));
}

void tst_StreamlabsApi::sendsOneArgumentAsStringOrBool()
{
    auto const arg = [](QVariant const& value) {
        return compact(StreamlabsApi::makeArgsObject(u"R"_s, value));
    };
    QCOMPARE(arg(5), uR"({"args":["5"],"resource":"R"})"_s);
    QCOMPARE(arg(true), uR"({"args":[true],"resource":"R"})"_s);
    QCOMPARE(arg(QVariant()), uR"({"args":[""],"resource":"R"})"_s);

    LogRecorder log;
    StreamlabsApi::makeSetAudioMuteObject(u"a1"_s, false);
    QVERIFY(log.take(u"debug: resource \"AudioSource['a1']\" QJsonObject({\"args\":[false]"_s));
}

// Each row: what comes in, and what the record says when it is written out again.
void tst_StreamlabsApi::decodesRecords_data()
{
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("in");
    QTest::addColumn<QByteArray>("out");

    QByteArray const noSource =
        R"({"id":"","name":"","parentId":"","sceneId":"","sceneItemId":"","sceneNodeType":"",)"
        R"("sourceId":"","locked":false,"streamVisible":true,"recordVisible":true,"visible":true})";
    QByteArray const source =
        R"({"id":"i","name":"n","parentId":"p","sceneId":"s","sceneItemId":"si",)"
        R"("sceneNodeType":"item","sourceId":"src","locked":true,"streamVisible":false,)"
        R"("recordVisible":false,"visible":false})";
    QTest::newRow("source") << QByteArray("Source") << source << source;
    QTest::newRow("empty source") << QByteArray("Source") << QByteArray("{}") << noSource;
    QTest::newRow("source of wrong types")
        << QByteArray("Source")
        << QByteArray(
               R"({"id":1,"name":null,"parentId":[],"visible":"false","locked":1,"streamVisible":null,"x":0})")
        << noSource;
    QTest::newRow("scene") << QByteArray("Scene")
                           << QByteArray(R"({"id":"s","name":"n","nodes":[)" + source + "]}")
                           << QByteArray(R"({"id":"s","name":"n","nodes":[)" + source + "]}");
    QTest::newRow("scene without nodes") << QByteArray("Scene") << QByteArray(R"({"id":"s","name":"n"})")
                                         << QByteArray(R"({"id":"s","name":"n","nodes":[]})");
    QTest::newRow("scene with odd nodes")
        << QByteArray("Scene") << QByteArray(R"({"id":"s","nodes":[1,[],null,{},"x"]})")
        << QByteArray(R"({"id":"s","name":"","nodes":[)" + noSource + "]}");
    QTest::newRow("nodes of wrong type")
        << QByteArray("Scene") << QByteArray(R"({"id":"s","name":"n","nodes":{}})")
        << QByteArray(R"({"id":"s","name":"n","nodes":[]})");
    QTest::newRow("collection")
        << QByteArray("Collection")
        << QByteArray(
               R"({"id":"c","name":"n","scenes":[{"id":"s"}],"sources":[{"id":"x","type":"t","channel":3}]})")
        << QByteArray(R"({"id":"c","name":"n","scenes":[{"id":"s","name":"","nodes":[]}],)"
                      R"("sources":[{"id":"x","name":"","type":"t","channel":3}]})");
    QTest::newRow("collection, channel of wrong type")
        << QByteArray("Collection") << QByteArray(R"({"id":"c","sources":[{"channel":"3"}]})")
        << QByteArray(
               R"({"id":"c","name":"","scenes":[],"sources":[{"id":"","name":"","type":"","channel":0}]})");
    QTest::newRow("audio source") << QByteArray("Audio")
                                  << QByteArray(R"({"sourceId":"a","name":"n","muted":true})")
                                  << QByteArray(R"({"sourceId":"a","name":"n","muted":true})");
    QTest::newRow("audio source of wrong types")
        << QByteArray("Audio") << QByteArray(R"({"sourceId":7,"muted":1})")
        << QByteArray(R"({"sourceId":"","name":"","muted":false})");
}

void tst_StreamlabsApi::decodesRecords()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, in);
    QFETCH(QByteArray, out);

    auto const again = [&](auto record) {
        fromJson(json(in), record);
        return toJson(record);
    };
    QCOMPARE(type == "Source"  ? again(Source())
             : type == "Scene" ? again(Scene())
             : type == "Audio" ? again(AudioSource())
                               : again(CollectionSchema()),
        json(out));
}

void tst_StreamlabsApi::decodesLists()
{
    QList<Source> sources(3);
    fromJson(json(R"({"l":[1,{"id":"a"},"x"]})").value("l"_L1).toArray(), sources);
    QCOMPARE(sources.size(), 1);
    QCOMPARE(sources.first().id, u"a"_s);
    fromJson(QJsonArray(), sources);
    QVERIFY(sources.isEmpty());

    LogRecorder log;
    CollectionSchema collection;
    fromJson(json(R"({"scenes":[{},{}],"sources":[{}]})"), collection);
    QVERIFY(log.take(u"debug: >> 2 1"_s));
}

void tst_StreamlabsApi::encodesWhatItDecodes()
{
    CollectionSchema const collection{u"c"_s, u"名前"_s,
        {{u"s"_s, u"'\"\\\n"_s,
            {{u"i"_s, u"n"_s, false, true, false, true, u"si"_s, u"s"_s, u"x"_s, u"item"_s, u"p"_s}}}},
        {{u"x"_s, u"n"_s, u"t"_s, 2}}};
    CollectionSchema again;
    fromJson(toJson(collection), again);
    QCOMPARE(again, collection);
}

// Random edits, each followed by a comparison with the list encoded anew.
void tst_StreamlabsApi::keepsTheEncodedScenesInStep()
{
    QRandomGenerator random(3);
    auto const anyOf = [&random](
                           QString const& prefix) { return prefix + QString::number(random.bounded(4)); };
    QList<Scene> scenes;
    for (int s = 0; s < 5; ++s) { // the last has the id of the first
        Scene scene{u"s%1"_s.arg(s % 4), u"scene"_s, {}};
        for (int i = 0; i < 6; ++i) {
            Source node;
            node.sceneId = scene.id;
            node.sceneItemId = u"i%1"_s.arg(i % 4);
            node.sourceId = anyOf(u"x"_s);
            scene.nodes.append(node);
        }
        scenes.append(scene);
    }

    SceneListCache cache;
    QCOMPARE(cache.json(), QJsonArray());
    cache.replace(scenes);
    int changes = 0;
    for (int round = 0; round < 500; ++round) {
        QJsonArray const before = cache.json();
        if (round % 2 == 0) {
            Source item;
            item.sceneId = anyOf(u"s"_s);
            item.sceneItemId = anyOf(u"i"_s);
            item.name = anyOf(u"name"_s);
            item.visible = random.bounded(2) == 0;
            item.locked = random.bounded(2) == 0;
            item.streamVisible = random.bounded(2) == 0;
            item.recordVisible = random.bounded(2) == 0;
            cache.updateItem(item);
        } else {
            cache.rename(random.bounded(2) == 0 ? anyOf(u"s"_s) : anyOf(u"x"_s), anyOf(u"name"_s));
        }
        QCOMPARE(cache.json(), toJson(cache.scenes()));
        changes += cache.json() == before ? 0 : 1;
    }
    QVERIFY(changes > 200);
    cache.clear();
    QCOMPARE(cache.json(), QJsonArray());
}

QTEST_APPLESS_MAIN(tst_StreamlabsApi)
#include "tst_StreamlabsApi.moc"
