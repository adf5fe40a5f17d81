#pragma once

#include "devhost/host/PackageCheck.h"
#include "devhost/script/ScriptRunner.h"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <optional>

class Console;
class DevHost;

//! Tells on standard output what happens in a development host: for people, or as one JSON object per line.
//!
//! JSON lines: {"event": "publication", "payload": {…}}, {"event": "led", "app", "function", "on": bool},
//! {"event": "link", "connected": bool} (what the service says of Streamlabs Desktop, when it changes),
//! {"event": "key", "index", "title", "invalid": bool} (a face, when it changes), {"event": "settings-page",
//! "page": number}, {"event": "log", "level", "category", "text"},
//! {"event": "step", "line": number, "text"}, {"event": "held", "line": number, "ms": number},
//! {"event": "check", "what", "good": bool, "text"} (of a package that is looked over),
//! {"event": "finished", "exit": number, "held": number, "problem"}.
//!
//! For people, log lines of the library are left out unless wanted, and go to standard error.
class EventReport : public QObject
{
    Q_OBJECT

public:
    enum class Format { Text, Json };

    //! Takes over Qt's message handler until it is destroyed. One at a time.
    EventReport(Format format, bool verbose, QObject* parent = nullptr);
    ~EventReport() override;

    void watch(DevHost& host);
    void watch(Console& console);
    void watch(ScriptRunner& runner);

    //! A line of the program itself for people; JSON has {"event": "note", "text"}.
    void note(QString const& text);
    void tell(PackageCheck::Finding const& finding);
    //! The last line of a run. \a held: how many expectations; none when there was no script.
    void finish(int exitCode, std::optional<int> held, QString const& problem);

private:
    void onPublication(QJsonObject const& payload);
    void onLed(QString const& app, QString const& function, bool on);
    void onStep(ScriptStep const& step);
    void onHeld(ScriptStep const& step, int elapsedMs);
    void onMessage(QtMsgType type, QMessageLogContext const& context, QString const& text);

    //! Prints a line below the current step, with the time since the step began.
    void tell(QString const& text);
    static void print(QString const& line);
    void print(QString const& event, QJsonObject members);

    Format outputFormat;
    bool isVerbose;
    QElapsedTimer total;
    QElapsedTimer currentStep;
    QHash<QString, bool> leds;
    std::optional<bool> wasLinked;
};
