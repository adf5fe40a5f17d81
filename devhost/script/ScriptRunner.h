#pragma once

#include "devhost/script/ScriptParser.h"

#include <QElapsedTimer>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QQueue>
#include <QString>
#include <QTimer>

class DevHost;

//! Runs the steps of a script on a development host, one after the other, as they come in.
class ScriptRunner : public QObject
{
    Q_OBJECT

public:
    //! How a run ended; the values are the program's exit codes.
    enum class Outcome {
        Held = 0,        //!< every expectation held
        Failed = 1,      //!< one did not
        WrongScript = 2, //!< a line could not be understood or done
    };

    //! \a fileName: what the script is called where something is wrong with it.
    ScriptRunner(DevHost& host, QString fileName, QObject* parent = nullptr);

    //! Adds a line. Wrong ones that are there at the start end the run before its first step, all of them
    //! named, and a later one when its turn comes.
    void addLine(QString const& line, int lineNumber);
    //! No more lines will come: the run ends behind the last.
    void endOfScript();
    //! Begins, or goes on.
    void start();

    int expectationsHeld() const { return held; }
    //! Whether the script itself ended the run.
    bool hasQuit() const { return quit; }

signals:
    void stepStarted(ScriptStep const& step);
    //! An expectation held after \a elapsedMs.
    void expectationHeld(ScriptStep const& step, int elapsedMs);
    //! The run is over. \a problem says for people what was expected and what came, or what is wrong with
    //! which lines, "file:line:column: why" each.
    void finished(ScriptRunner::Outcome outcome, QString const& problem);

private:
    struct Line
    {
        ScriptParser::Result parsed;
        int number = 0;
    };

    void listen();
    void proceed();
    void run(Line const& line);
    //! Goes on when what the current step waits for is there.
    void check();
    bool settleIfMet();
    bool hasCome(ScriptStep::Expectation const& expectation);
    QString whatCame(ScriptStep::Expectation const& expectation) const;
    //! "file:line:column: why"
    QString told(int line, qsizetype column, QString const& why) const;
    void finish(Outcome outcome, QString const& problem = {});

    DevHost& devHost;
    QString fileName;
    QQueue<Line> lines;
    bool started = false;
    bool complete = false;
    bool hasFinished = false;
    bool quit = false;
    //! The step that time or an event must end.
    std::optional<ScriptStep> current;
    QElapsedTimer since;
    QTimer timer;
    //! Why the current step cannot be done yet.
    QString lastProblem;
    //! A key's face tells of no change while nobody sees it, so it is looked at while a step waits for it.
    QTimer looking;
    int held = 0;
    //! What came since the last publication that was expected; of the lists the newest 50, of others 2000.
    QList<QJsonObject> publications;
    //! LED function to whether it is lit.
    QHash<QString, bool> leds;
};
