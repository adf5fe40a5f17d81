#include "devhost/script/ScriptRunner.h"

#include "devhost/fakes/JsonMatch.h"
#include "devhost/host/DevHost.h"
#include "devhost/script/PanelUser.h"

#include <QJsonDocument>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

bool isOfKey(ScriptStep::Expectation const& expectation)
{
    using Kind = ScriptStep::Expectation::Kind;
    return expectation.kind == Kind::Key || expectation.kind == Kind::Settings ||
           expectation.kind == Kind::Panel;
}

QString excerpt(QJsonObject const& object)
{
    QString const text = QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
    constexpr qsizetype kLongest = 400;
    return text.size() <= kLongest ? text : text.left(kLongest) + u" …"_s;
}

} // namespace

ScriptRunner::ScriptRunner(DevHost& host, QObject* parent) : QObject(parent), devHost(host)
{
    timer.setSingleShot(true);
    connect(&timer, &QTimer::timeout, this, [this] {
        ScriptStep const step = *std::exchange(current, std::nullopt);
        if (step.expectation) {
            finish(Outcome::Failed,
                u"line %1: %2\n%3"_s.arg(step.lineNumber).arg(step.text, whatCame(*step.expectation)));
        } else {
            proceed();
        }
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
        if (auto const wrong =
                std::ranges::find_if(lines, [](Line const& line) { return !line.parsed.step; });
            wrong != lines.end()) {
            run(*wrong);
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
        finish(Outcome::WrongScript, u"line %1: %2"_s.arg(line.number).arg(line.parsed.error));
        return;
    }
    ScriptStep const& step = *line.parsed.step;
    emit stepStarted(step);
    if (step.action) {
        if (QString const problem = step.action(devHost); !problem.isEmpty()) {
            finish(Outcome::WrongScript, u"line %1: %2: %3"_s.arg(step.lineNumber).arg(step.text, problem));
            return;
        }
    }
    if (step.quit) {
        quit = true;
        finish(Outcome::Held);
    } else if (step.expectation || step.waitMs) {
        current = step;
        since.start();
        if (step.expectation && isOfKey(*step.expectation)) {
            looking.start();
        }
        timer.start(step.expectation ? step.expectation->withinMs : *step.waitMs);
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
    if (!current || !current->expectation || !isMet(*current->expectation)) {
        return false;
    }
    timer.stop();
    looking.stop();
    ScriptStep const step = *std::exchange(current, std::nullopt);
    ++held;
    emit expectationHeld(step, static_cast<int>(since.elapsed()));
    return true;
}

bool ScriptRunner::isMet(ScriptStep::Expectation const& expectation)
{
    if (expectation.kind == ScriptStep::Expectation::Kind::Led) {
        auto const led = leds.constFind(expectation.name);
        return led != leds.constEnd() && *led == expectation.on;
    }
    if (isOfKey(expectation)) {
        ConsoleKey* const key = devHost.console().key(expectation.key);
        if (key) {
            key->checkFace(); // so that it is told before what it leads to
        }
        return key && jsonIncludes(keyState(expectation), expectation.members);
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
    if (expectation.kind == ScriptStep::Expectation::Kind::Led) {
        return leds.contains(expectation.name)
                   ? u"came: the LED is %1"_s.arg(leds.value(expectation.name) ? u"on"_s : u"off"_s)
                   : u"came: nothing for this LED"_s;
    }
    if (isOfKey(expectation)) {
        return devHost.console().key(expectation.key) ? u"it is: %1"_s.arg(excerpt(keyState(expectation)))
                                                      : u"there is nothing on that key"_s;
    }
    QStringList others;
    for (auto payload = publications.crbegin(); payload != publications.crend(); ++payload) {
        QString const task = payload->value("task"_L1).toString();
        if (task == expectation.name) {
            return u"came last with this task: %1"_s.arg(excerpt(*payload));
        }
        if (!others.contains(task)) {
            others.append(task);
        }
    }
    return others.isEmpty() ? u"came: nothing"_s
                            : u"came: nothing with this task, but %1"_s.arg(others.join(u", "_s));
}

QJsonObject ScriptRunner::keyState(ScriptStep::Expectation const& expectation) const
{
    ConsoleKey const& key = *devHost.console().key(expectation.key);
    if (expectation.kind == ScriptStep::Expectation::Kind::Settings) {
        return key.settings();
    }
    if (expectation.kind == ScriptStep::Expectation::Kind::Panel) {
        return key.panelWidget() ? PanelUser::look(*key.panelWidget(), expectation.objectName)
                                 : QJsonObject();
    }
    auto const face = key.face();
    return {{u"title"_s, face.title}, {u"invalid"_s, face.invalid}, {u"icon"_s, face.icon}};
}

void ScriptRunner::finish(Outcome outcome, QString const& problem)
{
    hasFinished = true;
    timer.stop();
    looking.stop();
    emit finished(outcome, problem);
}
