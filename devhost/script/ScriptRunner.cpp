#include "devhost/script/ScriptRunner.h"

#include "devhost/fakes/JsonMatch.h"
#include "devhost/host/DevHost.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

ScriptRunner::ScriptRunner(DevHost& host, QString name, QObject* parent)
    : QObject(parent), devHost(host), fileName(std::move(name))
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, [this] {
        ScriptStep const step = *std::exchange(current, std::nullopt);
        looking.stop();
        if (step.waitMs) {
            proceed();
            return;
        }
        QString const why = step.expectation ? whatCame(*step.expectation) : lastProblem;
        finish(Outcome::Failed, told(step.lineNumber, 1, u"%1\n%2"_s.arg(step.text, why)));
    });
    constexpr int kLookingInterval = 5;
    looking.setInterval(kLookingInterval);
    looking.callOnTimeout(this, &ScriptRunner::check);
}

// Not before the first step: who reports what came has connected by then, and tells it before what it led to.
void ScriptRunner::listen()
{
    connect(&devHost, &DevHost::publicationReceived, this, [this](QJsonObject const& payload) {
        // A list may be a megabyte, and a status is nothing: each kind has a bound of its own, so that no
        // list pushes out a status. What a script expects in turn is rarely further back than its last few
        // steps.
        constexpr qsizetype kMostLists = 50;
        constexpr qsizetype kMostOthers = 2000;
        bool const isList = payload.contains("list"_L1);
        auto const isAlike = [isList](
                                 QJsonObject const& known) { return known.contains("list"_L1) == isList; };
        if (std::ranges::count_if(publications, isAlike) == (isList ? kMostLists : kMostOthers)) {
            publications.erase(std::ranges::find_if(publications, isAlike));
        }
        publications.append(payload);
        check();
    });
    connect(
        &devHost, &DevHost::ledChanged, this, [this](QString const&, QString const& functionName, bool on) {
            leds.insert(functionName, on);
            check();
        });
}

void ScriptRunner::addLine(QString const& line, int lineNumber)
{
    auto parsed = ScriptParser::parse(line, lineNumber);
    if (parsed.step || !parsed.error.isEmpty()) {
        lines.enqueue({std::move(parsed), lineNumber});
        proceed();
    }
}

void ScriptRunner::endOfScript()
{
    complete = true;
    proceed();
}

void ScriptRunner::start()
{
    if (!started) {
        started = true;
        listen();
        QStringList problems;
        for (auto const& line : std::as_const(lines)) {
            if (!line.parsed.step) {
                problems.append(told(line.number, line.parsed.column, line.parsed.error));
            }
        }
        if (!problems.isEmpty()) {
            finish(Outcome::WrongScript, problems.join(u'\n'));
        }
    }
    proceed();
}

void ScriptRunner::proceed()
{
    if (!started) {
        return;
    }
    while (!hasFinished && !current && !lines.isEmpty()) {
        run(lines.dequeue());
    }
    if (!hasFinished && !current && complete) {
        finish(Outcome::Held);
    }
}

void ScriptRunner::run(Line const& line)
{
    if (!line.parsed.step) {
        finish(Outcome::WrongScript, told(line.number, line.parsed.column, line.parsed.error));
        return;
    }
    ScriptStep const& step = *line.parsed.step;
    emit stepStarted(step);
    if (step.action && !step.withinMs) {
        if (QString const problem = step.action(devHost); !problem.isEmpty()) {
            finish(Outcome::WrongScript, told(step.lineNumber, 1, u"%1: %2"_s.arg(step.text, problem)));
            return;
        }
    }
    if (step.quit) {
        quit = true;
        finish(Outcome::Held);
    } else if (step.withinMs || step.waitMs) {
        current = step;
        since.start();
        if (step.action) {
            looking.start();
        }
        timer.start(step.waitMs ? *step.waitMs : *step.withinMs);
        settleIfMet();
    }
}

void ScriptRunner::check()
{
    if (settleIfMet()) {
        proceed();
    }
}

bool ScriptRunner::settleIfMet()
{
    if (!current || current->waitMs) {
        return false;
    }
    // Out of the way while it is tried, for what it does may be heard here.
    ScriptStep step = *std::exchange(current, std::nullopt);
    lastProblem = step.expectation ? QString() : step.action(devHost);
    if (step.expectation ? !hasCome(*step.expectation) : !lastProblem.isEmpty()) {
        current = std::move(step);
        return false;
    }
    timer.stop();
    looking.stop();
    if (step.expects) {
        ++held;
        emit expectationHeld(step, static_cast<int>(since.elapsed()));
    }
    return true;
}

bool ScriptRunner::hasCome(ScriptStep::Expectation const& expectation)
{
    if (expectation.lit) {
        auto const led = leds.constFind(expectation.name);
        return led != leds.constEnd() && *led == *expectation.lit;
    }
    auto const match = std::ranges::find_if(publications, [&expectation](QJsonObject const& payload) {
        return payload.value("task"_L1) == expectation.name && jsonIncludes(payload, expectation.members);
    });
    if (match == publications.end()) {
        return false;
    }
    publications.erase(publications.begin(), std::next(match));
    return true;
}

QString ScriptRunner::whatCame(ScriptStep::Expectation const& expectation) const
{
    if (expectation.lit) {
        return leds.contains(expectation.name)
                   ? u"came: the LED is %1"_s.arg(leds.value(expectation.name) ? u"on"_s : u"off"_s)
                   : u"came: nothing for this LED"_s;
    }
    QStringList others;
    for (auto payload = publications.crbegin(); payload != publications.crend(); ++payload) {
        QString const task = payload->value("task"_L1).toString();
        if (task == expectation.name) {
            return u"came last with this task: %1"_s.arg(ScriptParser::excerpt(*payload));
        }
        if (!others.contains(task)) {
            others.append(task);
        }
    }
    return others.isEmpty() ? u"came: nothing"_s
                            : u"came: nothing with this task, but %1"_s.arg(others.join(u", "_s));
}

QString ScriptRunner::told(int line, qsizetype column, QString const& why) const
{
    return u"%1:%2:%3: "_s.arg(fileName).arg(line).arg(column) + why;
}

void ScriptRunner::finish(Outcome outcome, QString const& problem)
{
    hasFinished = true;
    timer.stop();
    looking.stop();
    emit finished(outcome, problem);
}
