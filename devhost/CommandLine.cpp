#include "devhost/CommandLine.h"

#include "devhost/script/ScriptParser.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QString scriptHelp()
{
    return QCoreApplication::translate("main", "Lines of a script (one that begins with # is a comment; "
                                               "words with blanks stand in double quotes):") +
           u"\n"_s + ScriptParser::help().join(u'\n') +
           QCoreApplication::translate("main",
               "\n\nA script begins before the link stands. Where that matters its first line is\n"
               "  expect onStreamlabsAuthResult {\"authorized\":true}\n"
               "The stand-in's API token is stand-in-token; --json tells its port.\n\n"
               "The window stays open when a script has run, unless the script ends with quit. Without a "
               "display the program ends with the script.\n\n"
               "Exit code: 0, the script ran and every expectation held; 1, one did not; 2, a line or an "
               "option is wrong, or the library cannot be used.\n\n"
               "Examples:\n"
               "  lumen-devhost --headless\n"
               "  echo 'expect onQueryScenes' | lumen-devhost --headless --script - --scenes 50 --items 40\n"
               "  lumen-devhost --headless --desktop-port 59650 --desktop-token-file FILE --script "
               "my.script --json\n");
}

//! What is written in \a fileName; empty, too, when it cannot be read.
QString tokenIn(QString const& fileName)
{
    QFile file(fileName);
    QString token = file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    while (token.endsWith(u'\n') || token.endsWith(u'\r')) {
        token.chop(1);
    }
    return token;
}

} // namespace

QString CommandLine::read(QStringList const& arguments)
{
    QCommandLineParser parser;
    QCommandLineOption const headlessOption(
        u"headless"_s, u"Use no display. Without a script a built-in tour runs."_s);
    QCommandLineOption const plugin(
        u"plugin"_s, u"Load this package library (default: the one built with this program)."_s, u"FILE"_s);
    QCommandLineOption const scriptOption(
        u"script"_s, u"Run these lines, - being standard input."_s, u"FILE"_s);
    QCommandLineOption const pictureOption(u"picture"_s,
        u"Leave a picture of the window when the script has run (default of the tour: lumen-console.png)."_s,
        u"FILE"_s);
    QCommandLineOption const desktopPort(u"desktop-port"_s,
        u"Use the Streamlabs Desktop whose remote control listens on this port, not the stand-in."_s, u"N"_s);
    QCommandLineOption const desktopTokenFile(u"desktop-token-file"_s,
        u"A file with its API token (default: LUMEN_DESKTOP_TOKEN of the environment)."_s, u"FILE"_s);
    QCommandLineOption const desktopToken(
        u"desktop-token"_s, u"The token itself, for all to see in the list of processes."_s, u"T"_s);
    QCommandLineOption const configDir(
        u"config-dir"_s, u"Folder for package data (default: the user's)."_s, u"DIR"_s);
    QCommandLineOption const language(
        u"language"_s, u"Language of the package, such as de_DE (default: en_US)."_s, u"CODE"_s);
    QCommandLineOption const scenes(u"scenes"_s, u"Give the stand-in this many scenes …"_s, u"N"_s);
    QCommandLineOption const items(u"items"_s, u"… with this many items each …"_s, u"N"_s);
    QCommandLineOption const audio(u"audio"_s, u"… and this many audio sources."_s, u"N"_s);
    QCommandLineOption const checkOption(u"check"_s,
        u"Look this package library over and report: exports, configuration, labels in each language, "
        "every action, images and memory. Exit code 1 when something is amiss."_s,
        u"FILE"_s);
    QCommandLineOption const contrastOption(u"contrast"_s,
        u"Look as on a desktop of high contrast: dark or light (default: as the desktop is)."_s, u"KIND"_s);
    QCommandLineOption const json(u"json"_s, u"Print one JSON object per line instead of text."_s);
    QCommandLineOption const verboseOption(u"verbose"_s, u"Print the package's log as well."_s);
    QCommandLineOption const help({u"h"_s, u"help"_s}, u"Show this."_s);

    parser.setApplicationDescription(u"Loads the LUMEN action package as the console's host does and drives "
                                     u"Streamlabs Desktop, or a stand-in "
                                     "for it, through it."_s);
    parser.addOptions({headlessOption, plugin, checkOption, scriptOption, pictureOption, desktopPort,
        desktopTokenFile, desktopToken, configDir, language, contrastOption, scenes, items, audio, json,
        verboseOption, help});
    if (!parser.parse(arguments)) {
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

    constexpr int kMostPort = 65535;
    constexpr int kMost = 1'000'000'000;
    if (parser.isSet(desktopTokenFile) && parser.isSet(desktopToken)) {
        return u"--desktop-token-file and --desktop-token are two ways to say one thing."_s;
    }
    if (parser.isSet(desktopPort) || parser.isSet(desktopTokenFile) || parser.isSet(desktopToken)) {
        QString const token = parser.isSet(desktopTokenFile) ? tokenIn(parser.value(desktopTokenFile))
                              : parser.isSet(desktopToken)   ? parser.value(desktopToken)
                                                             : qEnvironmentVariable("LUMEN_DESKTOP_TOKEN");
        if (parser.isSet(desktopTokenFile) && token.isEmpty()) {
            return u"The token file %1 cannot be read or is empty."_s.arg(parser.value(desktopTokenFile));
        }
        if (!parser.isSet(desktopPort) || token.isEmpty()) {
            return u"--desktop-port and a token, such as --desktop-token-file, go together."_s;
        }
        host.desktop = {number(desktopPort, 0, 1, kMostPort), token};
    }
    if (parser.isSet(scenes) || parser.isSet(items) || parser.isSet(audio)) {
        constexpr int kFewScenes = 5;
        constexpr int kFewItems = 10;
        constexpr int kFewAudio = 4;
        size = {number(scenes, kFewScenes, 1, kMost), number(items, kFewItems, 0, kMost),
            number(audio, kFewAudio, 0, kMost)};
        if (host.desktop) {
            return u"--scenes, --items and --audio are for the stand-in, and --desktop-port is without it."_s;
        }
        auto const objects = StandInModel::objectCount(size->scenes, size->items, size->audio);
        if (problem.isEmpty() && objects > StandInModel::kMostObjects) {
            return u"%1 scenes with %2 items each and %3 audio sources are %4 in all; the stand-in takes %5, "
                   "which is %6 such scenes."_s.arg(size->scenes)
                       .arg(size->items)
                       .arg(size->audio)
                       .arg(objects)
                       .arg(StandInModel::kMostObjects)
                       .arg(std::max(0, StandInModel::kMostObjects - size->audio) / (1 + size->items));
        }
    }
    if (!problem.isEmpty()) {
        return problem;
    }

    if (parser.isSet(scriptOption) && parser.value(scriptOption).isEmpty()) {
        return u"--script needs a file, or - for standard input."_s;
    }
    if (parser.isSet(configDir) && parser.value(configDir).isEmpty()) {
        return u"--config-dir needs a folder."_s;
    }

    contrast = parser.value(contrastOption);
    if (parser.isSet(contrastOption) && contrast != "dark"_L1 && contrast != "light"_L1) {
        return u"--contrast takes dark or light."_s;
    }
    check = parser.value(checkOption);
    if (parser.isSet(checkOption) && (check.isEmpty() || parser.isSet(scriptOption) || host.desktop)) {
        return u"--check needs a file, and neither a script nor Streamlabs Desktop."_s;
    }
    headless = parser.isSet(headlessOption) || !check.isEmpty();
    bool const tour = headless && !parser.isSet(scriptOption);
    if (tour && host.desktop) {
        return u"Without a display a running Streamlabs Desktop needs a --script: "
               "the tour is for the stand-in, and goes live."_s;
    }
    script = tour ? u":/devhost/demo.script"_s : parser.value(scriptOption);
    needsPicture = parser.isSet(pictureOption);
    picture = tour && !needsPicture ? u"lumen-console.png"_s : parser.value(pictureOption);
    // A script starts from an empty console, unless it is told where to keep one. The tour always does.
    host.keepsKeys = !tour && (parser.isSet(configDir) || script.isEmpty());
    host.pluginFile = parser.value(plugin);
    host.configDir = parser.isSet(configDir)
                         ? QDir(parser.value(configDir)).absolutePath()
                         : QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    if (!QDir().mkpath(host.configDir)) {
        // A home that cannot be written to is no reason against a look.
        temporaryFolder = std::make_shared<QTemporaryDir>();
        if (host.keepsKeys || parser.isSet(configDir) || !temporaryFolder->isValid()) {
            return u"The folder %1 cannot be made."_s.arg(host.configDir);
        }
        host.configDir = temporaryFolder->path();
    }
    if (parser.isSet(language)) {
        host.language = parser.value(language);
    }
    format = parser.isSet(json) ? EventReport::Format::Json : EventReport::Format::Text;
    verbose = parser.isSet(verboseOption);
    return {};
}
