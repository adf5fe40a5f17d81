// The service between a peer and a relay that do what the input says, line by line:
//   {…}  the peer sends this message        <TEXT  this frame, whatever it is
//   >{…} the relay hands the service this command
//   O  the peer accepts the connection      L  the connection is lost, or the attempt fails
//   R  the host connects; what follows is added to the token     C  it closes the link
//   S  it stops the service and starts another one               D  it deletes the service as it is, and
//   starts another one
//   @NX  at the N-th call that the service makes from here on (a publication, an event, a frame), X happens
//   inside

#include "fuzz/Fuzz.h"
#include "relay/ZoInterfaceRcc.h"
#include "relay/ZoRemoteCommands.h"
#include "streamlabs/SceneListCache.h"
#include "streamlabs/SlobsMessages.h"
#include "streamlabs/SockJsSocket.h"
#include "streamlabs/StreamlabsService.h"

#include <QHash>
#include <QJsonDocument>
#include <QMap>
#include <QPointer>

#include <algorithm>
#include <array>
#include <span>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

namespace {

//! Everything that may be published or dispatched: its members besides "task", no more and no less.
struct Form
{
    QString task;
    QList<std::pair<QLatin1StringView, QJsonValue::Type>> members;

    bool fits(QJsonObject const& message) const
    {
        return message.size() == members.size() + 1 &&
               std::ranges::all_of(members, [&message](auto const& member) {
                   return message.value(member.first).type() == member.second;
               });
    }
};

std::span<Form const> forms()
{
    using namespace SlobsAgentPrivate;
    using enum QJsonValue::Type;
    static std::array const all = std::to_array<Form>({
        {kQueryAuthStateResult, {{"authorized"_L1, Bool}, {"token"_L1, String}, {"port"_L1, Double}}},
        {kQueryStreamingStatusResult, {{"streamingStatus"_L1, String}}},
        {kQueryRecordingStatusResult, {{"recordingStatus"_L1, String}}},
        {kQueryScenesResult, {{"activeId"_L1, String}, {"list"_L1, Array}}},
        {kQueryCollectionsResult, {{"list"_L1, Array}}},
        {kQueryAudioListResult, {{"list"_L1, Array}}},
        {ZoRemoteCommands::kUpdateFunctionKeyLedAppControl,
            {{"sender"_L1, String}, {"appName"_L1, String}, {"functionName"_L1, String},
                {"status"_L1, Bool}}},
    });
    return all;
}

template <typename Record>
bool isAsEncoded(QJsonArray const& list)
{
    QList<Record> records;
    fromJson(list, records);
    return toJson(records) == list;
}

void requireForm(QJsonObject const& message)
{
    using namespace SlobsAgentPrivate;
    QString const task = message.value("task"_L1).toString();
    auto const form = std::ranges::find(forms(), task, &Form::task);
    Fuzz::require(form != forms().end() && form->fits(message), "a publication has its form");
    auto const list = message.value("list"_L1).toArray();
    Fuzz::require((task != kQueryScenesResult || isAsEncoded<Scene>(list)) &&
                      (task != kQueryCollectionsResult || isAsEncoded<CollectionSchema>(list)) &&
                      (task != kQueryAudioListResult || isAsEncoded<AudioSource>(list)),
        "a published list is as its records are encoded anew");
}

//! Everything around the service.
class World final : public ZoInterfaceRcc
{
public:
    class Socket;
    class Service;

    World() { start(); }
    ~World() { service.reset(); }

    void run(QByteArrayView line);

    void addCommandHandler(QString const& command, CommandHandler handler) override
    {
        handlers[command] = std::move(handler);
    }
    void removeCommandHandler(QString const& command) override { handlers.remove(command); }
    void publish(QString const& subject, QJsonObject const& payload) override
    {
        Fuzz::require(subject == ZoRemoteSubjects::kSubjectStreamlabsResponse, "the subject is the only one");
        tell(payload);
    }
    void dispatchEvent(QJsonObject const& event) override { tell(event); }

private:
    void start();
    void stop(bool properly);
    void command(char verb, QString const& rest);
    void tell(QJsonObject const& message);
    void react();
    void updateLists(QJsonValue const& result);

    QHash<QString, CommandHandler> handlers;
    std::unique_ptr<StreamlabsService> service;
    QPointer<Socket> socket;
    int lastId = 0;
    //! What is to happen at which call.
    QMap<int, char> reactions;
    int calls = 0;
    //! What keys and LEDs show, by task or function.
    QMap<QString, bool> lit;
    //! The same cache as the service's, so that it can be asked at any time.
    SceneListCache lists;
};

//! The transport without a network.
class World::Socket final : public SockJsSocket
{
public:
    explicit Socket(World& owner) : world(owner) {}

    enum class State { Closed, Opening, Open, Closing };
    //! A link was given up for this attempt without a signal: keys keep what they show until it has ended.
    bool keepsFaces() const { return isValid() || (isRenewing && state == State::Opening); }

    void open(QString const&, int) override
    {
        isRenewing = isValid() || (isRenewing && state == State::Opening);
        state = State::Opening;
    }
    void close() override { state = isValid() ? State::Closing : state; }
    void abort() override
    {
        bool const wasUp = isValid();
        state = State::Closed;
        if (wasUp) {
            emit disconnected();
        }
    }
    bool isValid() const override { return state == State::Open || state == State::Closing; }
    qint64 sendTextMessage(QString const& text) override
    {
        Fuzz::require(isValid(), "nothing is sent without a connection");
        constexpr auto kOpening = R"(["{\"id\":)"_L1;
        Fuzz::require(text.startsWith(kOpening), "a request begins with its id");
        auto const begin = QStringView(text).sliced(kOpening.size());
        Fuzz::require(begin.first(begin.indexOf(u',')).toInt() == ++world.lastId, "ids have no gaps");
        qint64 const size = text.size();
        world.react(); // which may end this object
        return size;
    }

    void accept()
    {
        if (state == State::Opening) {
            state = State::Open;
            emit connected();
        }
    }
    void lose()
    {
        if (std::exchange(state, State::Closed) != State::Closed) {
            emit disconnected();
        }
    }
    void receive(QString const& frame)
    {
        if (isValid()) {
            QMetaObject::invokeMethod(this, "onMessageReceived", Qt::DirectConnection, Q_ARG(QString, frame));
        }
    }

private:
    World& world;
    State state = State::Closed;
    bool isRenewing = false;
};

class World::Service final : public StreamlabsService
{
public:
    explicit Service(World& owner) : world(owner) {}

protected:
    std::unique_ptr<SockJsSocket> makeSocket() const override
    {
        auto made = std::make_unique<Socket>(world);
        world.socket = made.get();
        return made;
    }

private:
    World& world;
};

void World::start()
{
    lastId = 0;
    service = std::make_unique<Service>(*this);
    service->init(this);
}

void World::stop(bool properly)
{
    // As the package does: the pointer is reset last, and what happens inside may find the service half gone.
    if (properly) {
        QPointer const stopped = service.get();
        lastId = 0;
        service->closeSlobs();
        if (!stopped || stopped != service.get()) {
            return; // somebody else was here meanwhile
        }
        service->deinit();
    }
    service.reset();
    Fuzz::require(handlers.isEmpty(), "a service that is gone has left no handler");
    lit.clear();
    start();
}

void World::command(char verb, QString const& rest)
{
    switch (verb) {
    case 'O':
        return socket->accept();
    case 'L':
        return socket->lose();
    case 'R':
        return service->connectSlobs(u"token"_s + rest, 59650);
    case 'C':
        lastId = 0;
        return service->closeSlobs();
    case 'S':
        return stop(true);
    case 'D':
        return stop(false);
    default:
        return;
    }
}

void World::run(QByteArrayView line)
{
    if (line.isEmpty()) {
        return;
    }
    auto const rest = line.sliced(1);
    if (line.front() == '{') {
        auto const result = QJsonDocument::fromJson(line.toByteArray()).object().value("result"_L1);
        updateLists(result);
        QByteArray text = line.toByteArray();
        socket->receive(
            uR"(a["%1"])"_s.arg(QString::fromUtf8(text.replace('\\', "\\\\").replace('"', "\\\""))));
    } else if (line.front() == '<') {
        socket->receive(QString::fromUtf8(rest));
    } else if (line.front() == '>') {
        if (auto const handler = handlers.value(ZoRemoteCommands::kSlobsServiceTask)) {
            handler(nullptr, QJsonDocument::fromJson(rest.toByteArray()).object());
        }
    } else if (line.front() == '@') {
        if (rest.size() == 2) {
            reactions.insert(calls + (rest.front() & 0x0F), rest.back());
        }
    } else {
        command(line.front(), QString::fromUtf8(rest));
    }
    Fuzz::require(socket->keepsFaces() || !lit.values().contains(true), "without a link nothing is lit");
}

void World::tell(QJsonObject const& message)
{
    requireForm(message);
    for (auto const* status : {"streamingStatus", "recordingStatus"}) {
        if (QLatin1StringView const key(status); message.contains(key)) {
            lit[key] = !message.value(key).toString().isEmpty();
        }
    }
    if (message.contains("status"_L1)) {
        lit[message.value("functionName"_L1).toString()] = message.value("status"_L1).toBool();
    }
    react();
}

void World::react()
{
    if (char const verb = reactions.take(++calls)) {
        command(verb, {});
    }
}

void World::updateLists(QJsonValue const& result)
{
    if (result.isArray()) {
        QList<Scene> scenes;
        fromJson(result.toArray(), scenes);
        lists.replace(scenes);
    } else {
        QJsonObject const data = result.toObject().value("data"_L1).toObject();
        Source item;
        fromJson(data, item);
        lists.updateItem(item);
        lists.rename(item.sourceId, item.name);
    }
    Fuzz::require(lists.json() == toJson(lists.scenes()), "the cache is as its records are encoded anew");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    World world;
    for (auto const& line : Fuzz::bytes(data, size).toByteArray().split('\n')) {
        world.run(line);
    }
    return 0;
}
