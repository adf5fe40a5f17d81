#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>

#include <chrono>

//! What stands before a WebSocket server on the loopback interface: it takes in the TCP connections, reads
//! the head of each request without taking it away, and hands over those that programs of this machine have
//! made.
//!
//! A page in a browser reaches the loopback interface as well, but cannot keep its browser from saying so.
//! Refused with a plain HTTP answer are therefore
//! - 403: an `Origin` that is not empty; no `Host`, or one that is not a loopback name or address (localhost,
//!   127.0.0.0/8, [::1]) with this server's port; and two of either.
//! - 400: a head that is not made of "name: value" lines.
//! - 431: a head of more than 16 KiB.
//! - 408: a head that does not end within 10 s. Of more than 512 unfinished heads the oldest goes.
class LoopbackHandshake : public QObject
{
    Q_OBJECT

public:
    explicit LoopbackHandshake(QObject* parent = nullptr);

    //! Listens on 127.0.0.1; \a port 0 takes a free one. False when the port is taken or this listens
    //! already.
    bool listen(quint16 port) { return server.listen(QHostAddress::LocalHost, port); }
    //! Stops listening and drops the connections whose heads have not ended.
    void close();
    bool isListening() const { return server.isListening(); }
    //! 0 while not listening.
    quint16 port() const { return server.serverPort(); }
    QString errorString() const { return server.errorString(); }

    //! Drops the connections whose heads have not ended.
    void drop();
    //! How long a head may take, and how many may be unfinished.
    void setLimits(std::chrono::milliseconds patience, int mostUnfinished);

    //! Answers with \a status, such as "404 Not Found", and ends the connection.
    static void refuse(QTcpSocket* socket, QByteArray const& status);

signals:
    //! A request that may be answered. \a socket, a child of this, still holds all of it, and is deleted once
    //! it has disconnected.
    void requested(QTcpSocket* socket, QByteArray const& requestLine);

private:
    void accept();
    void read(QTcpSocket* socket);
    //! The HTTP status that a head deserves; empty when nothing is wrong with it.
    QByteArray problemOf(QByteArray const& head) const;
    bool isOurs(QString const& host) const;

    QTcpServer server;
    //! From the oldest on.
    QList<QTcpSocket*> unfinished;
    std::chrono::milliseconds timeLimit = std::chrono::seconds{10};
    //! More than a console has keys, each of which connects, and they do so all at once.
    int unfinishedLimit = 512;
};
