// What clients and services say to the development host's relay. Each line of the input is a message:
//   TEXT  a client sends it      !TEXT  a service in the host's process dispatches it

#include "devhost/fakes/RelayServer.h"
#include "fuzz/Fuzz.h"
#include "relay/ZoRemoteCommands.h"

#include <QJsonDocument>
#include <QWebSocket>

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    RelayServer relay;
    QWebSocket client; // connected to nothing: what is sent to it goes nowhere
    QString const handled = u"mine"_s;
    relay.addCommandHandler(handled, [&](QWebSocket*, QJsonObject const& command) {
        Fuzz::require(command.value("task"_L1) == handled, "a handler gets what it asked for");
        if (command.contains("drop"_L1)) {
            relay.removeCommandHandler(handled);
        }
    });
    QJsonObject understood;
    QObject::connect(
        &relay, &RelayServer::commandReceived, [&](QJsonObject const& command) { understood = command; });
    QObject::connect(&relay, &RelayServer::ledChanged, [](QString const& app, QString const& function, bool) {
        Fuzz::require(!app.isEmpty() && !function.isEmpty(), "an LED has a name");
    });

    for (auto const& line : QString::fromUtf8(Fuzz::bytes(data, size)).split(u'\n')) {
        bool const isOfHost = line.startsWith(u'!');
        auto const message = QJsonDocument::fromJson(line.sliced(isOfHost ? 1 : 0).toUtf8()).object();
        understood = {};
        if (isOfHost) {
            relay.dispatchEvent(message);
        } else {
            QMetaObject::invokeMethod(
                &relay, "receive", Qt::DirectConnection, Q_ARG(QWebSocket*, &client), Q_ARG(QString, line));
        }
        Fuzz::require(understood.isEmpty() || understood == message, "what is understood is what was said");
        relay.publish(message.value("subject"_L1).toString(), message);
    }
    return 0;
}
