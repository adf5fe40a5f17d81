// The agents of a process, which share what they have parsed and decoded of what the relay sends. Each line
// of the input is a message:
//   TEXT   every agent gets it
//   ~TEXT  the first agent alone gets it, as when the others are not connected yet
//   +TEXT  the second agent gets it while the first handles the next line

#include "actions/SlobsAgent.h"
#include "fuzz/Fuzz.h"

#include <QJsonDocument>

#include <array>
#include <utility>

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

//! What \a message says, and what is said again when that is written out.
void check(QJsonObject const& message)
{
    bool authorized = false;
    QString text;
    int port = 0;
    QList<Scene> scenes = decodedPlainly<Scene>(message);
    QList<CollectionSchema> collections = decodedPlainly<CollectionSchema>(message);
    QList<AudioSource> sources = decodedPlainly<AudioSource>(message);
    auto const decode = [&](QJsonObject const& from) {
        SlobsAgent::fromAuthState(from, authorized, text, port);
        SlobsAgent::fromStreamingStatus(from, text);
        SlobsAgent::fromRecordingStatus(from, text);
        SlobsAgent::fromSceneList(from, scenes, text);
        SlobsAgent::fromCollectionList(from, collections);
        SlobsAgent::fromAudioList(from, sources);
        return std::tuple(authorized, text, port, scenes, collections, sources);
    };
    auto const lists = std::tuple(scenes, collections, sources);
    auto const decoded = decode(message);
    Fuzz::require(lists == std::tuple(scenes, collections, sources), "lists are decoded as if alone");
    for (auto const& again :
        {SlobsAgent::toAuthState(authorized, text, port), SlobsAgent::toStreamingStatus(text),
            SlobsAgent::toRecordingStatus(text), SlobsAgent::toSceneList(scenes, text),
            SlobsAgent::toCollectionList(collections), SlobsAgent::toAudioList(sources)}) {
        Fuzz::require(decode(again) == decoded, "what is encoded is decoded the same");
    }
}

//! The text that is being handled, innermost last.
QList<QByteArrayView> handled;
QByteArrayView inside;

void receive(SlobsAgent& agent, QByteArrayView text)
{
    handled.append(text);
    QMetaObject::invokeMethod(
        &agent, "onTextMessageReceived", Qt::DirectConnection, Q_ARG(QString, QString::fromUtf8(text)));
    handled.removeLast();
}

void onMessage(SlobsAgent& other, QJsonObject const& message)
{

    auto const alone = QJsonDocument::fromJson(QString::fromUtf8(handled.last()).toUtf8()).object();
    Fuzz::require(message == alone, "a message is parsed as if alone");
    check(message);
    if (!inside.isEmpty()) {
        receive(other, std::exchange(inside, {}));
        check(message);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    using namespace SlobsAgentPrivate;
    std::array<SlobsAgent, 2> both;
    for (auto& agent : both) {
        for (auto const& task : {kQueryScenesResult, kQueryCollectionsResult, kQueryAudioListResult,
                 kQueryStreamingStatusResult, kQueryRecordingStatusResult, kQueryAuthStateResult}) {
            agent.addRccEventHandler(
                task, [&other = both.back()](QJsonObject const& message) { onMessage(other, message); });
        }
    }
    inside = {};
    auto const input = Fuzz::bytes(data, size).toByteArray();
    for (QByteArrayView const line : input.split('\n')) {
        if (line.startsWith('+')) {
            inside = line.sliced(1);
        } else if (line.startsWith('~')) {
            receive(both.front(), line.sliced(1));
        } else {
            receive(both.front(), line);
            receive(both.back(), line);
        }
    }
    return 0;
}
