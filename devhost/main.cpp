// lumen-devhost: runs the action package without the console and without Streamlabs Desktop.

#include "devhost/DevHost.h"
#include "devhost/EventReport.h"
#include "devhost/ScriptRunner.h"
#include "devhost/ScriptSource.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QStandardPaths>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int exitUsage = 2;

struct CommandLine
{
    DevHost::Options host;
    QString script = u":/devhost/demo.script"_s;
    EventReport::Format format = EventReport::Format::Text;
    bool verbose = false;
    //! Size of the stand-in's model; without one it has its demo collection.
    struct Size
    {
        int scenes = 0;
        int items = 0;
        int audio = 0;
    };
    std::optional<Size> size;
};

QString scriptHelp()
{
    return QCoreApplication::translate(
               "main", "Lines of a script (# begins a comment; words with blanks stand in double quotes):") +
           u"\n"_s + ScriptParser::help().join(u'\n') +
           QCoreApplication::translate("main",
               "\n\nExit code: 0, the script ran and every expectation held; 1, one did not; 2, a line or an "
               "option "
               "is wrong, or the library cannot be used.\n\n"
               "Examples:\n"
               "  lumen-devhost --headless\n"
               "  echo 'expect onQueryScenes' | lumen-devhost --headless --script - --scenes 50 --items 40\n"
               "  lumen-devhost --headless --desktop-port 59650 --desktop-token TOKEN --script my.script "
               "--json\n");
}

//! Fills \a result, or answers with what is wrong.
QString read(QCommandLineParser& parser, CommandLine& result)
{
    QCommandLineOption const headless(u"headless"_s, u"Run without a window (there is none yet)."_s);
    QCommandLineOption const plugin(
        u"plugin"_s, u"Load this package library (default: the one built with this program)."_s, u"FILE"_s);
    QCommandLineOption const script(u"script"_s,
        u"Run these lines, - being standard input (default: a tour of all that the service does)."_s,
        u"FILE"_s);
    QCommandLineOption const desktopPort(u"desktop-port"_s,
        u"Use the Streamlabs Desktop whose remote control listens on this port, not the stand-in."_s, u"N"_s);
    QCommandLineOption const desktopToken(u"desktop-token"_s, u"Its API token."_s, u"T"_s);
    QCommandLineOption const configDir(
        u"config-dir"_s, u"Folder for package data (default: the user's)."_s, u"DIR"_s);
    QCommandLineOption const language(
        u"language"_s, u"Language of the package, such as de_DE (default: en_US)."_s, u"CODE"_s);
    QCommandLineOption const scenes(u"scenes"_s, u"Give the stand-in this many scenes …"_s, u"N"_s);
    QCommandLineOption const items(u"items"_s, u"… with this many items each …"_s, u"N"_s);
    QCommandLineOption const audio(u"audio"_s, u"… and this many audio sources."_s, u"N"_s);
    QCommandLineOption const json(u"json"_s, u"Print one JSON object per line instead of text."_s);
    QCommandLineOption const verbose(u"verbose"_s, u"Print the package's log as well."_s);
    QCommandLineOption const help({u"h"_s, u"help"_s}, u"Show this."_s);

    parser.setApplicationDescription(u"Loads the LUMEN action package as the console's host does and drives "
                                     u"Streamlabs Desktop, or a stand-in "
                                     "for it, through it."_s);
    parser.addOptions({headless, plugin, script, desktopPort, desktopToken, configDir, language, scenes,
        items, audio, json, verbose, help});
    if (!parser.parse(QCoreApplication::arguments())) {
        return parser.errorText();
    }
    if (parser.isSet(help)) {
        std::printf("%s\n%s", qPrintable(parser.helpText()), qPrintable(scriptHelp()));
        std::exit(0);
    }
    if (!parser.positionalArguments().isEmpty()) {
        return u"What is \"%1\"?"_s.arg(parser.positionalArguments().first());
    }

    QString problem;
    auto const number = [&](QCommandLineOption const& option, int fallback, int least, int most) {
        if (!parser.isSet(option)) {
            return fallback;
        }
        bool ok = false;
        int const value = parser.value(option).toInt(&ok);
        if (!ok || value < least || value > most) {
            problem =
                u"--%1 takes a number from %2 to %3."_s.arg(option.names().constFirst()).arg(least).arg(most);
        }
        return value;
    };

    constexpr int mostPort = 65535;
    constexpr int mostObjects = 100000;
    if (parser.isSet(desktopPort) || parser.isSet(desktopToken)) {
        result.host.desktop = {number(desktopPort, 0, 1, mostPort), parser.value(desktopToken)};
        if (!parser.isSet(desktopPort) || result.host.desktop->token.isEmpty()) {
            return u"--desktop-port and --desktop-token go together."_s;
        }
    }
    if (parser.isSet(scenes) || parser.isSet(items) || parser.isSet(audio)) {
        constexpr int fewScenes = 5;
        constexpr int fewItems = 10;
        constexpr int fewAudio = 4;
        result.size = {number(scenes, fewScenes, 1, mostObjects), number(items, fewItems, 0, mostObjects),
            number(audio, fewAudio, 0, mostObjects)};
        if (result.host.desktop) {
            return u"--scenes, --items and --audio are for the stand-in, and --desktop-port is without it."_s;
        }
    }
    if (!problem.isEmpty()) {
        return problem;
    }

    result.host.pluginFile = parser.value(plugin);
    result.host.configDir = parser.isSet(configDir)
                                ? QDir(parser.value(configDir)).absolutePath()
                                : QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    if (!QDir().mkpath(result.host.configDir)) {
        return u"The folder %1 cannot be made."_s.arg(result.host.configDir);
    }
    if (parser.isSet(language)) {
        result.host.language = parser.value(language);
    }
    if (parser.isSet(script)) {
        result.script = parser.value(script);
    }
    result.format = parser.isSet(json) ? EventReport::Format::Json : EventReport::Format::Text;
    result.verbose = parser.isSet(verbose);
    return {};
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication const app(argc, argv);
    QCoreApplication::setApplicationName(u"lumen-devhost"_s);

    QCommandLineParser parser;
    CommandLine commandLine;
    if (QString const problem = read(parser, commandLine); !problem.isEmpty()) {
        std::fprintf(stderr, "%s\nlumen-devhost --help tells more.\n", qPrintable(problem));
        return exitUsage;
    }

    EventReport report(commandLine.format, commandLine.verbose);
    DevHost host;
    if (auto const& size = commandLine.size) {
        host.standIn().model().generate(size->scenes, size->items, size->audio);
    }
    report.watch(host); // before the runner, so that what comes is told before what it leads to
    ScriptRunner runner(host);
    report.watch(runner);
    ScriptSource source;

    int exitCode = 0;
    QString problem;
    QObject::connect(
        &runner, &ScriptRunner::finished, &app, [&](ScriptRunner::Outcome outcome, QString const& why) {
            exitCode = static_cast<int>(outcome);
            problem = why;
            QCoreApplication::quit();
        });
    QObject::connect(&host, &DevHost::ready, &runner, &ScriptRunner::start);
    QObject::connect(&source, &ScriptSource::lineRead, &runner, &ScriptRunner::addLine);
    QObject::connect(&source, &ScriptSource::ended, &runner, &ScriptRunner::endOfScript);

    if (!source.read(commandLine.script)) {
        problem = u"The script %1 cannot be read."_s.arg(commandLine.script);
        exitCode = exitUsage;
    } else if (!host.start(commandLine.host)) {
        problem = host.errorString();
        exitCode = exitUsage;
    } else {
        QCoreApplication::exec();
        if (!host.stop()) {
            problem = u"The library stayed in memory when it was unloaded."_s;
            exitCode = std::max(exitCode, 1);
        }
    }
    report.finish(exitCode, runner.expectationsHeld(), problem);
    return exitCode;
}
