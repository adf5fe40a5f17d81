// The agents of a process, which share the decoding of what the relay sends them. Each line of the input is a
// message:
//   TEXT   every agent gets it
//   ~TEXT  the first agent alone gets it, as when the others are not connected yet
//   +TEXT  the second agent gets it while the first handles the next line

#include "actions/SlobsAgent.h"
#include "fuzz/Fuzz.h"

#include <QJsonDocument>

#include <array>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

template <typename Record>
QList<Record> decodedPlainly(QJsonObject const& message)
{
    QList<Record> records;
    for (auto const& element : message.value("list"_L1).toArray()) {
        fromJson(element.toObject(), records.emplaceBack());
    }
    return records;
}

class Agents
{
public:
    Agents()
    {
        for (auto& agent : agents) {
            addHandlers(agent);
        }
    }

    void run(QByteArrayView line)
    {
        if (line.startsWith('+')) {
            inside = line.sliced(1);
        } else if (line.startsWith('~')) {
            receive(agents.front(), line.sliced(1));
        } else {
            for (auto& agent : agents) {
                receive(agent, line);
            }
        }
    }

private:
    static void receive(SlobsAgent& agent, QByteArrayView text)
    {
        QMetaObject::invokeMethod(
            &agent, "onTextMessageReceived", Qt::DirectConnection, Q_ARG(QString, QString::fromUtf8(text)));
    }

    void addHandlers(SlobsAgent& agent)
    {
        using namespace SlobsAgentPrivate;
        auto const on = [this, &agent](QString const& task, SlobsAgent::Handler const& check) {
            agent.addRccEventHandler(task, [this, check](QJsonObject const& message) {
                check(message);
                if (!inside.isEmpty()) {
                    receive(agents.back(), std::exchange(inside, {}));
                    check(message);
                }
            });
        };
        on(kQueryScenesResult, [](QJsonObject const& message) {
            QList<Scene> scenes;
            QString activeId;
            SlobsAgent::fromSceneList(message, scenes, activeId);
            Fuzz::require(scenes == decodedPlainly<Scene>(message), "scenes are decoded as if alone");
            requireAgain(
                SlobsAgent::toSceneList(scenes, activeId), scenes, [&](QJsonObject const& again, auto& list) {
                    SlobsAgent::fromSceneList(again, list, activeId);
                });
        });
        on(kQueryCollectionsResult, [](QJsonObject const& message) {
            QList<CollectionSchema> collections;
            SlobsAgent::fromCollectionList(message, collections);
            Fuzz::require(collections == decodedPlainly<CollectionSchema>(message),
                "collections are decoded as if alone");
            requireAgain(
                SlobsAgent::toCollectionList(collections), collections, SlobsAgent::fromCollectionList);
        });
        on(kQueryAudioListResult, [](QJsonObject const& message) {
            QList<AudioSource> sources;
            SlobsAgent::fromAudioList(message, sources);
            Fuzz::require(sources == decodedPlainly<AudioSource>(message), "sources are decoded as if alone");
            requireAgain(SlobsAgent::toAudioList(sources), sources, SlobsAgent::fromAudioList);
        });
        on(kQueryStreamingStatusResult, [](QJsonObject const& message) {
            QString status;
            SlobsAgent::fromStreamingStatus(message, status);
            requireAgain(SlobsAgent::toStreamingStatus(status), status, SlobsAgent::fromStreamingStatus);
        });
        on(kQueryRecordingStatusResult, [](QJsonObject const& message) {
            QString status;
            SlobsAgent::fromRecordingStatus(message, status);
            requireAgain(SlobsAgent::toRecordingStatus(status), status, SlobsAgent::fromRecordingStatus);
        });
        on(kQueryAuthStateResult, [](QJsonObject const& message) {
            bool authorized = false;
            QString token;
            int port = 0;
            SlobsAgent::fromAuthState(message, authorized, token, port);
            requireAgain(SlobsAgent::toAuthState(authorized, token, port), token,
                [&](QJsonObject const& again, QString& text) {
                    SlobsAgent::fromAuthState(again, authorized, text, port);
                });
        });
    }

    template <typename Value, typename Decode>
    static void requireAgain(QJsonObject const& encoded, Value const& value, Decode decode)
    {
        Value again;
        decode(encoded, again);
        Fuzz::require(again == value, "what is encoded is decoded the same");
    }

    std::array<SlobsAgent, 2> agents;
    QByteArrayView inside;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    Agents agents;
    auto const input = Fuzz::bytes(data, size).toByteArray();
    for (auto const& line : input.split('\n')) {
        agents.run(line);
    }
    return 0;
}
