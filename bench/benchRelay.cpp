#include "actions/SlobsAgent.h"
#include "bench/BenchRow.h"
#include "streamlabs/SceneListCache.h"

#include <QJsonDocument>

#include <vector>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

QList<Scene> largeCollection()
{
    constexpr int kScenes = 50;
    constexpr int kItems = 40;
    QList<Scene> list;
    for (int s = 0; s < kScenes; ++s) {
        Scene scene{
            u"scene_6f1c0c52-9d6e-4f0e-8a52-%1"_s.arg(s, 12, 10, QChar(u'0')), u"Scene %1"_s.arg(s), {}};
        for (int i = 0; i < kItems; ++i) {
            Source node;
            node.id = u"6f1c0c52-9d6e-4f0e-%1-%2"_s.arg(s, 4, 10, QChar(u'0')).arg(i, 12, 10, QChar(u'0'));
            node.sceneItemId = node.id;
            node.sceneId = scene.id;
            node.sourceId = u"image_source_6f1c0c52-9d6e-%1-%2"_s.arg(s).arg(i);
            node.name = u"Item %1 of %2"_s.arg(i).arg(s);
            node.sceneNodeType = u"item"_s;
            scene.nodes.append(node);
        }
        list.append(scene);
    }
    return list;
}

//! A list that changes by one item at a time, as a drag or a click on an eye does it.
class ChangingList
{
public:
    ChangingList() { cache.replace(largeCollection()); }

    QJsonObject publishAfterOneChange()
    {
        Scene const& scene = cache.scenes().at(turn % cache.scenes().size());
        Source item = scene.nodes.at(turn % scene.nodes.size());
        item.visible = !item.visible;
        ++turn;
        cache.updateItem(item);
        return SlobsAgent::toSceneList(cache.json(), u"active"_s);
    }

    QJsonObject encodeAnew() const { return SlobsAgent::toSceneList(cache.scenes(), u"active"_s); }

private:
    SceneListCache cache;
    qsizetype turn = 0;
};

//! What agents do with one text, of which each gets its own copy.
class Agents
{
public:
    explicit Agents(std::size_t count) : agents(count)
    {
        for (auto& agent : agents) {
            agent.addRccEventHandler(
                SlobsAgentPrivate::kQueryScenesResult, [this](QJsonObject const& message) {
                    QString activeId;
                    SlobsAgent::fromSceneList(message, scenes, activeId);
                });
        }
    }

    //! Microseconds that they take together. Their sockets' work, making a copy each, does not count.
    double handle(QString const& text)
    {
        double sum = 0;
        for (auto& agent : agents) {
            QString const copy(text.constData(), text.size());
            sum += microseconds([&] {
                QMetaObject::invokeMethod(
                    &agent, "onTextMessageReceived", Qt::DirectConnection, Q_ARG(QString, copy));
            });
        }
        return sum;
    }

private:
    std::vector<SlobsAgent> agents;
    QList<Scene> scenes;
};

QList<BenchRow> publishOneChange()
{
    ChangingList list;
    list.publishAfterOneChange();
    qsizetype members = 0;
    constexpr int kRounds = 301;
    return {compare(
        {.what = u"publish one changed item of 2,000"_s,
            .floorIs = u"encode the whole list anew"_s,
            .limit = 0.2},
        kRounds, [&] { members += list.publishAfterOneChange().size(); },
        [&] { members += list.encodeAnew().size(); })};
}

QList<BenchRow> publishToAgents()
{
    constexpr std::size_t kMany = 32;
    constexpr int kRounds = 101;
    constexpr double kHalf = 0.5;
    std::vector<double> oneTimes;
    std::vector<double> manyTimes;
    ChangingList list;
    auto const measure = [&list](std::size_t count, std::vector<double>& times) {
        Agents agents(count);
        QJsonObject payload;
        double const publishing = microseconds([&] { payload = list.publishAfterOneChange(); });
        times.push_back(publishing + agents.handle(QString::fromUtf8(
                                         QJsonDocument(payload).toJson(QJsonDocument::Compact))));
    };
    for (int round = 0; round < kRounds; ++round) {
        measure(1, oneTimes);
        measure(kMany, manyTimes);
    }
    return {{.what = u"publish one changed item of 2,000 and decode it in 32 agents, transport excluded"_s,
        .floorIs = u"the same with 1 agent"_s,
        .ours = quantile(std::move(manyTimes), kHalf),
        .floor = quantile(std::move(oneTimes), kHalf),
        .limit = 1.5}};
}

} // namespace

Benchmarks benchRelay()
{
    return {{u"publish"_s, publishOneChange}, {u"agents"_s, publishToAgents}};
}
