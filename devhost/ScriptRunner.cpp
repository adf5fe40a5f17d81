#include "devhost/ScriptRunner.h"

#include "devhost/DevHost.h"
#include "devhost/JsonMatch.h"
#include "devhost/PanelUser.h"

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
    constexpr qsizetype longest = 400;
    return text.size() <= longest ? text : text.left(longest) + u" …"_s;
}

} // namespace

ScriptRunner::ScriptRunner(DevHost& host, QObject* parent) : QObject(parent), m_host(host)
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        ScriptStep const step = *std::exchange(m_current, std::nullopt);
        if (step.expectation) {
            finish(Outcome::Failed,
                u"line %1: %2\n%3"_s.arg(step.lineNumber).arg(step.text, whatCame(*step.expectation)));
        } else {
            proceed();
        }
    });
    constexpr int lookingInterval = 5;
    m_looking.setInterval(lookingInterval);
    m_looking.callOnTimeout(this, &ScriptRunner::check);
}

// Not before the first step: who reports what came has connected by then, and tells it before what it led to.
void ScriptRunner::listen()
{
    connect(&m_host, &DevHost::publicationReceived, this, [this](QJsonObject const& payload) {
        // A list may be a megabyte, and a status is nothing: each kind has a bound of its own, so that no
        // list pushes out a status. What a script expects in turn is rarely further back than its last few
        // steps.
        constexpr qsizetype mostLists = 50;
        constexpr qsizetype mostOthers = 2000;
        bool const isList = payload.contains("list"_L1);
        auto const isAlike = [isList](
                                 QJsonObject const& known) { return known.contains("list"_L1) == isList; };
        if (std::ranges::count_if(m_publications, isAlike) == (isList ? mostLists : mostOthers)) {
            m_publications.erase(std::ranges::find_if(m_publications, isAlike));
        }
        m_publications.append(payload);
        check();
    });
    connect(
        &m_host, &DevHost::ledChanged, this, [this](QString const&, QString const& functionName, bool on) {
            m_leds.insert(functionName, on);
            check();
        });
}

void ScriptRunner::addLine(QString const& line, int lineNumber)
{
    auto parsed = ScriptParser::parse(line, lineNumber);
    if (parsed.step || !parsed.error.isEmpty()) {
        m_lines.enqueue({std::move(parsed), lineNumber});
        proceed();
    }
}

void ScriptRunner::endOfScript()
{
    m_complete = true;
    proceed();
}

void ScriptRunner::start()
{
    if (!m_started) {
        m_started = true;
        listen();
        if (auto const wrong =
                std::ranges::find_if(m_lines, [](Line const& line) { return !line.parsed.step; });
            wrong != m_lines.end()) {
            run(*wrong);
        }
    }
    proceed();
}

void ScriptRunner::proceed()
{
    if (!m_started) {
        return;
    }
    while (!m_finished && !m_current && !m_lines.isEmpty()) {
        run(m_lines.dequeue());
    }
    if (!m_finished && !m_current && m_complete) {
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
        if (QString const problem = step.action(m_host); !problem.isEmpty()) {
            finish(Outcome::WrongScript, u"line %1: %2: %3"_s.arg(step.lineNumber).arg(step.text, problem));
            return;
        }
    }
    if (step.quit) {
        m_quit = true;
        finish(Outcome::Held);
    } else if (step.expectation || step.waitMs) {
        m_current = step;
        m_since.start();
        if (step.expectation && isOfKey(*step.expectation)) {
            m_looking.start();
        }
        m_timer.start(step.expectation ? step.expectation->withinMs : *step.waitMs);
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
    if (!m_current || !m_current->expectation || !isMet(*m_current->expectation)) {
        return false;
    }
    m_timer.stop();
    m_looking.stop();
    ScriptStep const step = *std::exchange(m_current, std::nullopt);
    ++m_held;
    emit expectationHeld(step, static_cast<int>(m_since.elapsed()));
    return true;
}

bool ScriptRunner::isMet(ScriptStep::Expectation const& expectation)
{
    if (expectation.kind == ScriptStep::Expectation::Kind::Led) {
        auto const led = m_leds.constFind(expectation.name);
        return led != m_leds.constEnd() && *led == expectation.on;
    }
    if (isOfKey(expectation)) {
        ConsoleKey* const key = m_host.console().key(expectation.key);
        if (key) {
            key->checkFace(); // so that it is told before what it leads to
        }
        return key && jsonIncludes(keyState(expectation), expectation.members);
    }
    auto const match = std::ranges::find_if(m_publications, [&expectation](QJsonObject const& payload) {
        return payload.value("task"_L1) == expectation.name && jsonIncludes(payload, expectation.members);
    });
    if (match == m_publications.end()) {
        return false;
    }
    m_publications.erase(m_publications.begin(), std::next(match));
    return true;
}

QString ScriptRunner::whatCame(ScriptStep::Expectation const& expectation) const
{
    if (expectation.kind == ScriptStep::Expectation::Kind::Led) {
        return m_leds.contains(expectation.name)
                   ? u"came: the LED is %1"_s.arg(m_leds.value(expectation.name) ? u"on"_s : u"off"_s)
                   : u"came: nothing for this LED"_s;
    }
    if (isOfKey(expectation)) {
        return m_host.console().key(expectation.key) ? u"it is: %1"_s.arg(excerpt(keyState(expectation)))
                                                     : u"there is nothing on that key"_s;
    }
    QStringList others;
    for (auto payload = m_publications.crbegin(); payload != m_publications.crend(); ++payload) {
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
    ConsoleKey const& key = *m_host.console().key(expectation.key);
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
    m_finished = true;
    m_timer.stop();
    m_looking.stop();
    emit finished(outcome, problem);
}
