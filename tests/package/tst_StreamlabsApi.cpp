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
    // Only what is particular: the service's test sees nearly all of them arrive at the other side.
    void buildsRequests()
    {
        using Api = StreamlabsApi;
        auto const call = [](QVariant const& argument) {
            return Api::makeJsonRpcObject(u"m"_s, Api::makeArgsObject(u"R"_s, argument));
        };
        LogRecorder log;
        std::pair<QJsonObject, QByteArray> const requests[] = {
            {Api::makeAuthObject(u"'t'"_s),
                R"("auth","params":{"resource":"TcpServerService","args":["'t'"]})"},
            {Api::makeGetCollectionListObject(),
                R"("collections","params":{"resource":"SceneCollectionsService","args":[]})"},
            {Api::makeSetSourceVisibleObject(u"%2"_s, u"%3"_s, u"%1"_s, true),
                R"("setVisibility","params":{"resource":"SceneItem['%2', '%3', '%1']","args":[true]})"},
            {Api::makeSetAudioMuteObject(u"a1"_s, false),
                R"("setMuted","params":{"resource":"AudioSource['a1']","args":[false]})"},
            // One argument, as string or bool.
            {call(5), R"("m","params":{"resource":"R","args":["5"]})"},
            {call({}), R"("m","params":{"resource":"R","args":[""]})"},
        };
        for (auto const& [request, expected] : requests) {
            QCOMPARE(request, json(R"({"jsonrpc":"2.0","method":)" + expected + '}'));
        }
        QVERIFY(log.take(u"debug: resource \"AudioSource['a1']\" QJsonObject({\"args\":[false]"_s));
    }

    // What comes in, and what the record says when it is written out again.
    void decodesRecords()
    {
        auto const check = [](auto record, QByteArray const& in, QByteArray const& out = {}) {
            fromJson(json(in), record);
            QCOMPARE(toJson(record), json(out.isEmpty() ? in : out));
        };
        QByteArray const source =
            R"({"id":"i","name":"n","parentId":"p","sceneId":"s","sceneItemId":"si",)"
            R"("sceneNodeType":"item","sourceId":"src","locked":true,"streamVisible":false,)"
            R"("recordVisible":true,"visible":false})";
        QByteArray const noSource =
            R"({"id":"","name":"","parentId":"","sceneId":"","sceneItemId":"","sceneNodeType":"",)"
            R"("sourceId":"","locked":false,"streamVisible":true,"recordVisible":true,"visible":true})";
        check(Scene(), R"({"id":"s","name":"'\"\\\n名前'","nodes":[)" + source + "]}");
        check(Scene(),
            R"({"nodes":[1,[],null,{},"x",{"id":1,"name":null,"parentId":[],"visible":"false","locked":1,)"
            R"("streamVisible":null,"x":0}]})",
            R"({"id":"","name":"","nodes":[)" + noSource + ',' + noSource + "]}");
        check(CollectionSchema(), R"({"id":"c","name":"n","scenes":[{"id":"s","name":"","nodes":[]}],)"
                                  R"("sources":[{"id":"x","name":"sn","type":"t","channel":3}]})");
        check(CollectionSchema(), R"({"sources":[{"channel":"3"}]})",
            R"({"id":"","name":"","scenes":[],"sources":[{"id":"","name":"","type":"","channel":0}]})");
        check(AudioSource(), R"({"sourceId":"a","name":"n","muted":true})");
        check(AudioSource(), R"({"sourceId":7,"muted":1})", R"({"sourceId":"","name":"","muted":false})");
    }

    void decodesOverWhatIsThere()
    {
        Scene scene{{}, {}, QList<Source>(2)};
        fromJson(json(R"({"id":"a"})"), scene);
        QCOMPARE(scene.nodes.size(), 2); // it says nothing of them
        fromJson(json(R"({"nodes":{}})"), scene);
        QCOMPARE(scene.nodes.size(), 0);

        LogRecorder log;
        CollectionSchema collection;
        fromJson(json(R"({"scenes":[{},{}],"sources":[{}]})"), collection);
        QVERIFY(log.take(u"debug: >> 2 1"_s));
    }

    // Random edits, each followed by a comparison with the list encoded anew.
    void keepsTheEncodedScenesInStep()
    {
        QRandomGenerator random(3);
        auto const anyOf = [&](char const* prefix) {
            return QString::fromLatin1(prefix) + QString::number(random.bounded(4));
        };
        auto const anyItem = [&](QString const& sceneId, QString const& sceneItemId) {
            auto const flag = [&] { return random.bounded(2) == 0; };
            return Source{
                {}, anyOf("name"), flag(), flag(), flag(), flag(), sceneItemId, sceneId, {}, {}, {}};
        };
        QList<Scene> scenes;
        for (int s = 0; s < 5; ++s) { // the last has the id of the first
            Scene scene{u"s%1"_s.arg(s % 4), u"scene"_s, {}};
            for (int i = 0; i < 6; ++i) {
                scene.nodes.append(anyItem(scene.id, u"i%1"_s.arg(i % 4)));
                scene.nodes.last().sourceId = anyOf("x");
            }
            scenes.append(scene);
        }

        SceneListCache cache;
        QCOMPARE(cache.json(), QJsonArray());
        cache.replace(scenes);
        for (int round = 0; round < 500; ++round) {
            Source const item = anyItem(anyOf("s"), anyOf("i"));
            QString const id = anyOf(random.bounded(2) == 0 ? "s" : "x");
            bool const renames = round % 2 == 0;
            for (auto& scene : scenes) {
                scene.name = renames && scene.id == id ? item.name : scene.name;
                for (auto& node : scene.nodes) {
                    if (renames) {
                        node.name = node.sourceId == id ? item.name : node.name;
                    } else if (node.sceneId == item.sceneId && node.sceneItemId == item.sceneItemId) {
                        QString const sourceId = node.sourceId;
                        node = item;
                        node.sourceId = sourceId;
                    }
                }
            }
            renames ? cache.rename(id, item.name) : cache.updateItem(item);
            QCOMPARE(cache.json(), toJson(scenes));
            QCOMPARE(cache.scenes(), scenes);
        }
        cache.clear();
        QCOMPARE(cache.json(), QJsonArray());
    }
};

QTEST_APPLESS_MAIN(tst_StreamlabsApi)
#include "tst_StreamlabsApi.moc"
