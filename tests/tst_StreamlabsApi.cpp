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
    void buildsRequests();
    void sendsOneArgumentAsStringOrBool();
    void decodesRecords_data();
    void decodesRecords();
    void decodesLists();
    void keepsTheEncodedScenesInStep();
};

// Only what is particular: the service's test sees nearly all of them arrive at the other side.
void tst_StreamlabsApi::buildsRequests()
{
    using Api = StreamlabsApi;
    LogRecorder log;
    std::pair<QJsonObject, QByteArray> const requests[] = {
        {Api::makeAuthObject(u"t'k"_s), R"("auth","params":{"resource":"TcpServerService","args":["t'k"]})"},
        {Api::makeGetCollectionListObject(),
            R"("collections","params":{"resource":"SceneCollectionsService","args":[]})"},
        {Api::makeSetSourceVisibleObject(u"%2"_s, u"%3"_s, u"%1"_s, true),
            R"("setVisibility","params":{"resource":"SceneItem['%2', '%3', '%1']","args":[true]})"},
        {Api::makeSetAudioMuteObject(u"a1"_s, false),
            R"("setMuted","params":{"resource":"AudioSource['a1']","args":[false]})"},
    };
    for (auto const& [request, expected] : requests) {
        QCOMPARE(request, json(R"({"jsonrpc":"2.0","method":)" + expected + '}'));
    }
    QVERIFY(log.take(u"debug: resource \"AudioSource['a1']\" QJsonObject({\"args\":[false]"_s));
}

void tst_StreamlabsApi::sendsOneArgumentAsStringOrBool()
{
    auto const arg = [](QVariant const& value) {
        return compact(StreamlabsApi::makeArgsObject(u"R"_s, value));
    };
    QCOMPARE(arg(5), uR"({"args":["5"],"resource":"R"})"_s);
    QCOMPARE(arg(true), uR"({"args":[true],"resource":"R"})"_s);
    QCOMPARE(arg(QVariant()), uR"({"args":[""],"resource":"R"})"_s);
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
    auto const row = [](char const* name, QByteArray const& type, QByteArray const& in,
                         QByteArray const& out = {}) {
        QTest::newRow(name) << type << in << (out.isEmpty() ? in : out);
    };
    row("source", "Source", source);
    row("empty source", "Source", "{}", noSource);
    row("source of wrong types", "Source",
        R"({"id":1,"name":null,"parentId":[],"visible":"false","locked":1,"streamVisible":null,"x":0})",
        noSource);
    row("scene", "Scene", R"({"id":"s","name":"'\"\\\n名前","nodes":[)" + source + "]}");
    row("scene without nodes", "Scene", R"({"id":"s"})", R"({"id":"s","name":"","nodes":[]})");
    row("scene with odd nodes", "Scene", R"({"id":"s","name":"n","nodes":[1,[],null,{},"x"]})",
        R"({"id":"s","name":"n","nodes":[)" + noSource + "]}");
    row("nodes of wrong type", "Scene", R"({"id":"s","name":"n","nodes":{}})",
        R"({"id":"s","name":"n","nodes":[]})");
    row("collection", "Collection",
        R"({"id":"c","name":"n","scenes":[{"id":"s","name":"","nodes":[]}],)"
        R"("sources":[{"id":"x","name":"sn","type":"t","channel":3}]})");
    row("collection, channel of wrong type", "Collection", R"({"sources":[{"channel":"3"}]})",
        R"({"id":"","name":"","scenes":[],"sources":[{"id":"","name":"","type":"","channel":0}]})");
    row("audio source", "Audio", R"({"sourceId":"a","name":"n","muted":true})");
    row("audio source of wrong types", "Audio", R"({"sourceId":7,"muted":1})",
        R"({"sourceId":"","name":"","muted":false})");
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
    Scene scene{{}, {}, QList<Source>(2)};
    fromJson(json(R"({"id":"a"})"), scene);
    QCOMPARE(scene.nodes.size(), 2); // it says nothing of them
    fromJson(json(R"({"nodes":[]})"), scene);
    QCOMPARE(scene.nodes.size(), 0);

    LogRecorder log;
    CollectionSchema collection;
    fromJson(json(R"({"scenes":[{},{}],"sources":[{}]})"), collection);
    QVERIFY(log.take(u"debug: >> 2 1"_s));
}

// Random edits, each followed by a comparison with the list encoded anew.
void tst_StreamlabsApi::keepsTheEncodedScenesInStep()
{
    QRandomGenerator random(3);
    auto const anyOf = [&random](
                           QString const& prefix) { return prefix + QString::number(random.bounded(4)); };
    auto const anyItem = [&](QString const& sceneId, QString const& sceneItemId) {
        Source item;
        item.sceneId = sceneId;
        item.sceneItemId = sceneItemId;
        item.name = anyOf(u"name"_s);
        for (bool* flag : {&item.visible, &item.locked, &item.streamVisible, &item.recordVisible}) {
            *flag = random.bounded(2) == 0;
        }
        return item;
    };
    QList<Scene> scenes;
    for (int s = 0; s < 5; ++s) { // the last has the id of the first
        Scene scene{u"s%1"_s.arg(s % 4), u"scene"_s, {}};
        for (int i = 0; i < 6; ++i) {
            scene.nodes.append(anyItem(scene.id, u"i%1"_s.arg(i % 4)));
            scene.nodes.last().sourceId = anyOf(u"x"_s);
        }
        scenes.append(scene);
    }

    SceneListCache cache;
    QCOMPARE(cache.json(), QJsonArray());
    cache.replace(scenes);
    int changes = 0;
    for (int round = 0; round < 500; ++round) {
        QJsonArray const before = cache.json();
        Source item = anyItem(anyOf(u"s"_s), anyOf(u"i"_s));
        QString const id = random.bounded(2) == 0 ? anyOf(u"s"_s) : anyOf(u"x"_s);
        bool const renames = round % 2 == 0;
        for (auto& scene : scenes) {
            scene.name = renames && scene.id == id ? item.name : scene.name;
            for (auto& node : scene.nodes) {
                if (renames) {
                    node.name = node.sourceId == id ? item.name : node.name;
                } else if (node.sceneId == item.sceneId && node.sceneItemId == item.sceneItemId) {
                    item.sourceId = node.sourceId;
                    node = item;
                }
            }
        }
        renames ? cache.rename(id, item.name) : cache.updateItem(item);
        QCOMPARE(cache.json(), toJson(scenes));
        QCOMPARE(toJson(cache.scenes()), toJson(scenes));
        changes += cache.json() == before ? 0 : 1;
    }
    QVERIFY(changes > 200);
    cache.clear();
    QCOMPARE(cache.json(), QJsonArray());
}

QTEST_APPLESS_MAIN(tst_StreamlabsApi)
#include "tst_StreamlabsApi.moc"
