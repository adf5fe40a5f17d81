#pragma once

#include "devhost/fakes/SockJsServer.h"
#include "devhost/fakes/StandInModel.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

//! Stands in for Streamlabs Desktop: its remote-control API, JSON-RPC 2.0 over SockJS, in front of a
//! pretended application that people and tests operate through `model()`.
//!
//! An independent program in all but the process: it has its own names for everything of that API and shares
//! no code with the client, so that an error of the client cannot hide in it.
//!
//! Requests: {"jsonrpc": "2.0", "id", "method", "params": {"resource", "args": […]}}. A resource is a service
//! ("ScenesService") or an object of it, its name followed by a JSON array of ids
//! (`SceneItem["scene","item","source"]`). A method may name a property or an event stream as well. Answers
//! carry "id" and either "result" or "error"
//! {"code", "message"}:
//! - -32700 no JSON; -32600 not an object, or without a truthy "id", "params" or "params"."resource";
//! - -32601 unknown resource or method; -32602 no object with these ids;
//! - -32603 "Authorization required", "Invalid token".
//!
//! Events, {"id": null, "result": {"_type": "EVENT", …}}, go to the clients that named their stream. An event
//! that a request causes leaves before the answer to the request, except with promises, which are answered
//! first.
//!
//! Everything runs on the thread of the object and its event loop.
class StreamlabsStandIn : public QObject
{
    Q_OBJECT

public:
    //! Makes the whole answer to \a request; an empty object stands for no answer at all.
    using Script = std::function<QJsonObject(QJsonObject const& request)>;

    explicit StreamlabsStandIn(QObject* parent = nullptr);

    //! Listens on 127.0.0.1; \a port 0 takes a free one. False when the port is taken or it runs already.
    bool start(quint16 port = 0);
    //! Says goodbye to the clients and stops listening. The application behind it goes on.
    void stop();
    //! Quits as the application does: `stop`, and what it streams and records has ended. The contents stay.
    void quit();
    //! Breaks every connection and goes on listening.
    void drop();
    bool isRunning() const { return server.isListening(); }
    //! 0 while not running.
    quint16 port() const { return server.port(); }
    //! The port of the last start, 0 before the first.
    quint16 lastPort() const { return startedPort; }

    //! The token that clients must send, "stand-in-token" at first. An empty one lets nobody in. A new one
    //! does not put out clients that are in.
    QString token() const { return expectedToken; }
    void setToken(QString const& token) { expectedToken = token; }

    StandInModel& model() { return standInModel; }
    SockJsServer& transport() { return server; }
    int clientCount() const { return static_cast<int>(clients.size()); }
    int authorizedCount() const;

    //! \name Faults
    //! Methods are named with their resource: "ScenesService.getScenes", "SceneItem.setVisibility".
    //!@{
    //! While true, answers (the late half of a promise included) are kept back; events go on.
    void setHoldingReplies(bool hold) { holdingReplies = hold; }
    //! Sends what was kept back, in order, to every client connected now, whether it asked or not.
    void releaseReplies();
    //! Answers \a method by \a script from now on, without any check of the token. An empty script ends that.
    void scriptReply(QString const& method, Script const& script);
    //! Answers \a method with \a result and the id of the request.
    void scriptResult(QString const& method, QJsonValue const& result);
    //! Sends \a message to every client, authorized or not.
    void sendObject(QJsonObject const& message);
    //!@}

signals:
    void requestReceived(QJsonObject const& request);
    //! An answer has left: not when it is kept back, and not for events.
    void replySent(QJsonObject const& reply);
    //! The number of clients or of authorized ones has changed.
    void clientCountChanged();
    //! It was started or stopped.
    void runningChanged();

private:
    struct Client
    {
        bool authorized = false;
        QSet<QString> streams;
    };

    // A request taken apart.
    struct Call
    {
        int client = 0;
        QJsonValue id;
        QStringList objectIds;
        QJsonArray args;
    };

    struct Answer
    {
        QJsonValue result;
        int errorCode = 0;
        QString errorMessage;
    };

    void fillMethodTable();
    void handleMessage(int client, QString const& message);
    void handleRequest(int client, QJsonObject const& request);
    void dispatch(QString const& method, Call const& call);
    Answer authorize(Call const& call);
    void answerPromise(Call const& call, std::function<QJsonValue()> const& work);
    void answer(Call const& call, Answer const& answer);
    void reply(int client, QJsonObject const& message);
    void sendEvent(QString const& resourceId, QJsonValue const& data);

    StandInModel standInModel;
    SockJsServer server;
    quint16 startedPort = 0;
    QString expectedToken;
    QHash<int, Client> clients;
    QHash<QString, std::function<Answer(Call const&)>> methods;
    QHash<QString, std::function<QJsonValue()>> promises;
    QSet<QString> streams;
    QHash<QString, Script> scripts;
    bool holdingReplies = false;
    std::vector<QJsonObject> heldReplies;
};
