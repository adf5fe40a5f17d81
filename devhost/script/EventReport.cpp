#include "devhost/script/EventReport.h"

#include "devhost/fakes/DevHostLog.h"
#include "devhost/host/DevHost.h"
#include "streamlabs/SlobsMessages.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace SlobsAgentPrivate;

namespace {

EventReport* current = nullptr;

QString levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return u"debug"_s;
    case QtInfoMsg:
        return u"info"_s;
    case QtWarningMsg:
        return u"warning"_s;
    case QtCriticalMsg:
        return u"critical"_s;
    case QtFatalMsg:
        break;
    }
    return u"fatal"_s;
}

//! Whether the package tells that it, or Streamlabs Desktop, did not do what it was asked for.
bool isRefusal(QString const& text)
{
    return text.startsWith("[onServiceTask]"_L1) || text == "unrecognized response"_L1;
}

QStringList namesOf(QJsonArray const& list, auto const& wanted)
{
    QStringList names;
    for (auto const& element : list) {
        if (QJsonObject const object = element.toObject(); wanted(object)) {
            names.append(object.value("name"_L1).toString());
        }
    }
    return names;
}

//! One publication in a few words.
QString describe(QJsonObject const& payload)
{
    QString const task = payload.value("task"_L1).toString();
    QJsonArray const list = payload.value("list"_L1).toArray();
    if (task == kQueryAuthStateResult) {
        return payload.value("authorized"_L1).toBool()
                   ? u"connected to port %1"_s.arg(payload.value("port"_L1).toInt())
                   : u"not connected"_s;
    }
    if (task == kQueryStreamingStatusResult) {
        return u"\"%1\""_s.arg(payload.value("streamingStatus"_L1).toString());
    }
    if (task == kQueryRecordingStatusResult) {
        return u"\"%1\""_s.arg(payload.value("recordingStatus"_L1).toString());
    }
    if (task == kQueryScenesResult) {
        QJsonValue const activeId = payload.value("activeId"_L1);
        auto const active =
            namesOf(list, [&](QJsonObject const& scene) { return scene.value("id"_L1) == activeId; });
        qsizetype nodes = 0;
        qsizetype hidden = 0;
        for (auto const& scene : list) {
            QJsonArray const sceneNodes = scene.toObject().value("nodes"_L1).toArray();
            nodes += sceneNodes.size();
            hidden += std::ranges::count_if(sceneNodes,
                [](QJsonValue const& node) { return !node.toObject().value("visible"_L1).toBool(true); });
        }
        return u"%1 scenes with %2 nodes, %3 of them hidden; active: %4"_s.arg(list.size())
            .arg(nodes)
            .arg(hidden)
            .arg(active.isEmpty() ? u"none of them"_s : active.join(", "_L1));
    }
    if (task == kQueryAudioListResult) {
        auto const muted =
            namesOf(list, [](QJsonObject const& source) { return source.value("muted"_L1).toBool(); });
        return u"%1 audio sources; muted: %2"_s.arg(list.size())
            .arg(muted.isEmpty() ? u"none"_s : muted.join(", "_L1));
    }
    if (task == kQueryCollectionsResult) {
        return u"%1 collections: %2"_s.arg(list.size()).arg(namesOf(list, [](QJsonObject const&) {
            return true;
        }).join(", "_L1));
    }
    return QString::fromUtf8(QJsonDocument(payload).toJson(QJsonDocument::Compact)).left(200);
}

} // namespace

EventReport::EventReport(Format format, bool verbose, QObject* parent)
    : QObject(parent), outputFormat(format), isVerbose(verbose)
{
    total.start();
    currentStep.start();
    current = this;
    qInstallMessageHandler([](QtMsgType type, QMessageLogContext const& context, QString const& text) {
        current->onMessage(type, context, text);
    });
}

EventReport::~EventReport()
{
    qInstallMessageHandler(nullptr);
    current = nullptr;
}

void EventReport::watch(DevHost& host)
{
    connect(&host, &DevHost::publicationReceived, this, &EventReport::onPublication);
    connect(&host, &DevHost::ledChanged, this, &EventReport::onLed);
    connect(&host.relay(), &RelayServer::settingsPageRequested, this, [this](int page) {
        if (outputFormat == Format::Json) {
            print(u"settings-page"_s, {{u"page"_s, page}});
        } else {
            tell(u"asks for the host's settings, page %1"_s.arg(page));
        }
    });
}

void EventReport::watch(Console& console)
{
    connect(&console, &Console::faceChanged, this, [this, &console](int index) {
        ConsoleKey const* const key = console.key(index);
        if (!key) {
            return;
        }
        auto const face = key->face();
        if (outputFormat == Format::Json) {
            print(u"key"_s, {{u"index"_s, index}, {u"title"_s, face.title}, {u"invalid"_s, face.invalid}});
        } else {
            tell(u"%1  \"%2\"%3"_s.arg(u"key %1"_s.arg(index), -24)
                    .arg(face.title, face.invalid ? u", invalid"_s : QString()));
        }
    });
}

void EventReport::watch(ScriptRunner& runner)
{
    connect(&runner, &ScriptRunner::stepStarted, this, &EventReport::onStep);
    connect(&runner, &ScriptRunner::expectationHeld, this, &EventReport::onHeld);
}

void EventReport::onPublication(QJsonObject const& payload)
{
    if (outputFormat == Format::Json) {
        print(u"publication"_s, {{u"payload"_s, payload}});
    } else {
        tell(u"%1  %2"_s.arg(payload.value("task"_L1).toString(), -24).arg(describe(payload)));
    }

    if (payload.value("task"_L1) == QJsonValue(kQueryAuthStateResult)) {
        bool const linked = payload.value("authorized"_L1).toBool();
        if (wasLinked != linked && outputFormat == Format::Json) {
            print(u"link"_s, {{u"connected"_s, linked}});
        }
        wasLinked = linked;
    }
}

void EventReport::onLed(QString const& app, QString const& function, bool on)
{
    if (outputFormat == Format::Json) {
        print(u"led"_s, {{u"app"_s, app}, {u"function"_s, function}, {u"on"_s, on}});
    } else if (!leds.contains(function) || leds.value(function) != on) {
        tell(u"%1  %2"_s.arg(u"LED %1"_s.arg(function), -24).arg(on ? u"on"_s : u"off"_s));
    }
    leds.insert(function, on);
}

void EventReport::onStep(ScriptStep const& step)
{
    currentStep.restart();
    if (outputFormat == Format::Json) {
        print(u"step"_s, {{u"line"_s, step.lineNumber}, {u"text"_s, step.text}});
    } else if (step.note) {
        print(u"\n%1"_s.arg(*step.note));
    } else {
        print(u"%1  %2"_s.arg(step.lineNumber, 4).arg(step.text));
    }
}

void EventReport::onHeld(ScriptStep const& step, int elapsedMs)
{
    if (outputFormat == Format::Json) {
        print(u"held"_s, {{u"line"_s, step.lineNumber}, {u"ms"_s, elapsedMs}});
    } else {
        tell(u"as expected"_s);
    }
}

void EventReport::onMessage(QtMsgType type, QMessageLogContext const& context, QString const& text)
{
    QString const category = QString::fromUtf8(context.category);
    if (outputFormat == Format::Json) {
        print(u"log"_s, {{u"level"_s, levelName(type)}, {u"category"_s, category}, {u"text"_s, text}});
    } else if (isVerbose || category == QLatin1StringView(devHostLog().categoryName()) || isRefusal(text)) {
        std::fflush(stdout);
        std::fprintf(stderr, "      %s: %s\n", qPrintable(levelName(type)), qPrintable(text));
    }
}

void EventReport::note(QString const& text)
{
    if (outputFormat == Format::Json) {
        print(u"note"_s, {{u"text"_s, text}});
    } else {
        print(u"\n%1"_s.arg(text));
    }
}

void EventReport::tell(PackageCheck::Finding const& finding)
{
    if (outputFormat == Format::Json) {
        print(u"check"_s, {{u"what"_s, finding.what}, {u"good"_s, finding.good}, {u"text"_s, finding.text}});
    } else {
        print(u"%1  %2  %3"_s.arg(finding.good ? u"good "_s : u"AMISS"_s)
                .arg(finding.what, -32)
                .arg(finding.text));
    }
}

void EventReport::finish(int exitCode, std::optional<int> held, QString const& problem)
{
    if (outputFormat == Format::Json) {
        print(u"finished"_s, {{u"exit"_s, exitCode}, {u"held"_s, held.value_or(0)}, {u"problem"_s, problem}});
    } else if (problem.isEmpty()) {
        print(
            u"\nDone: %1 in %2 s."_s.arg(held ? u"%1 expectations held"_s.arg(*held) : u"nothing is amiss"_s)
                .arg(static_cast<double>(total.elapsed()) / 1000, 0, 'f', 1));
    } else {
        std::fflush(stdout);
        std::fprintf(stderr, "\n%s\n", qPrintable(problem));
    }
}

void EventReport::tell(QString const& text)
{
    print(u"      %1 ms  %2"_s.arg(currentStep.elapsed(), 5).arg(text));
}

void EventReport::print(QString const& line)
{
    std::fprintf(stdout, "%s\n", qPrintable(line));
    std::fflush(stdout);
}

void EventReport::print(QString const& event, QJsonObject members)
{
    members.insert("event"_L1, event);
    print(QString::fromUtf8(QJsonDocument(members).toJson(QJsonDocument::Compact)));
}
