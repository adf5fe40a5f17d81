#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTcpServer>
#include <QWebSocket>
#include <QWebSocketServer>

//! Two WebSocket connections in one process that pass given texts on and do nothing else: what the way of a
//! key press costs without us.
class BareHops : public QObject
{
    Q_OBJECT

public:
    //! The texts in their order: client one to server one, client two to server two, back from there (all of
    //! them), and back from server one to client one.
    struct Texts
    {
        QString there;
        QString request;
        QStringList answers;
        QString back;
    };

    explicit BareHops(Texts texts);

    //! Waits for both connections.
    bool connectBoth();
    //! Once there and back.
    void run();
    //! The two halves of it.
    void runThere();
    void runBack();

private:
    struct Hop
    {
        QTcpServer tcp;
        QWebSocketServer upgrader{QString(), QWebSocketServer::NonSecureMode};
        QWebSocket client;
        QWebSocket* peer = nullptr;
    };

    void prepare(Hop& hop);

    Texts messages;
    Hop first;
    Hop second;
    qsizetype answered = 0;
    bool answers = true;
    bool arrived = false;
    bool done = false;
};
