// The development host's scripts, and the program as a person runs it.

#include "devhost/fakes/JsonMatch.h"
#include "devhost/script/ScriptParser.h"
#include "tests/TestJson.h"

#include <QImage>
#include <QJsonArray>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

using namespace Qt::StringLiterals;

class tst_DevHost : public QObject
{
    Q_OBJECT

private slots:
    void matchesJson();
    void parsesLines_data();
    void parsesLines();
    void runs_data();
    void runs();
    void speaksJson();
    void takesLinesAsTheyCome();
    void usesARunningDesktop();
    void keepsKeysToTheirOwner();
};

void tst_DevHost::matchesJson()
{
    struct
    {
        char const* value;
        char const* expected;
        bool matches;
    } const cases[] = {
        {R"({"a":1,"b":2})", R"({"a":1})", true},
        {R"({"a":1})", R"({"a":1,"b":2})", false},
        {R"({"a":1})", R"({"b":null})", false},
        {R"({"a":"1"})", R"({"a":1})", false},
        {R"({"a":{"x":1,"y":[1,2]}})", R"({"a":{"y":[2]}})", true},
        {R"({"l":[1,2,3]})", R"({"l":[1,3]})", true},
        {R"({"l":[1,2,3]})", R"({"l":[3,1]})", false},
        {R"({"l":[1]})", R"({"l":[1,1]})", false},
        {R"({"l":[{"n":"a"},{"n":"b"}]})", R"({"l":[{"n":"b"}]})", true},
        {R"({"l":{}})", R"({"l":[]})", false},
    };
    for (auto const& [value, expected, matches] : cases) {
        QVERIFY2(jsonIncludes(json(value), json(expected)) == matches, expected);
    }
}

void tst_DevHost::parsesLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("error"); // a part of it; empty: the line is good

    for (auto const* good : {"", "   ", "# log", "log it's \"{", "task queryScenes",
             R"(task queryScenes {"a":{"b":"}"}})", "host connect", "expect onQueryScenes",
             R"(expect onQueryScenes {"list":[{"nodes":[{"visible":true}]}]} within 5)",
             "expect onQueryScenes within 0", "expect-led STREAM on", "\texpect-led\tRECORD off within 9",
             "desktop start", R"(desktop rename-scene "a b" "ä\u00e4 \"")", "wait 0", "quit"}) {
        QTest::addRow("good: %s", good) << QString::fromUtf8(good) << QString();
    }
    auto const bad = [](char const* line, char const* error) {
        QTest::addRow("bad: %s", line) << QString::fromUtf8(line) << QString::fromUtf8(error);
    };
    bad("task", "5 TASK is missing");
    bad(R"(task {"a":1})", "6 TASK is missing");
    bad(R"(task x{"a":1})", "7 a blank is missing");
    bad("task queryScenes y", "18 there is more on the line");
    bad("task dance", "6 \"dance\" is no TASK, but these are: queryAuthState,");
    bad("expect dance", "8 \"dance\" is no TASK, but these are: onQuery");
    bad(R"(task x {"a":})", "8 ");
    bad(R"(  task x {"a":1)", "10 this has no end");
    bad("settings 0", "JSON is missing");
    bad("expect-key 0 within 5", "JSON is missing");
    bad("expect-panel 0 btnRefresh", "JSON is missing");
    bad(R"(task "x)", "this has no end");
    bad("host sing", "\"sing\" is not connect|disconnect|reconnect");
    bad("expect onQueryScenes within", "28 MS is missing");
    bad("expect onQueryScenes within soon", "29 \"soon\" is not a number");
    bad("expect-led BLINK on", "\"BLINK\" is not STREAM|RECORD");
    bad("expect-led STREAM maybe", "\"maybe\" is not on|off");
    bad("desktop dance", "9 \"dance\" is no CONTROL");
    bad("desktop scene", "14 SCENE is missing (desktop scene SCENE)");
    bad(R"(expect-key 0 {"title":"","titel":""})",
        R"(26 "titel" is no member, but these are: icon, invalid, title)");
    bad(R"(expect onQueryScenes {"list":[{"nodes":[{"nme":""}]}]})", R"(42 "nme" is no member)");
    bad(R"(expect-panel 0 x {"txt":""})", R"("txt" is no member)");
    bad("wait -1", "not a number of milliseconds");
}

void tst_DevHost::parsesLines()
{
    QFETCH(QString, line);
    QFETCH(QString, error);
    auto const result = ScriptParser::parse(line, 7);
    QCOMPARE(result.error.isEmpty(), error.isEmpty());
    QString const told = u"%1 %2"_s.arg(result.column).arg(result.error);
    QVERIFY2(told.contains(error), qPrintable(told));
    bool const isStep = error.isEmpty() && !line.trimmed().isEmpty() && !line.startsWith(u'#');
    QCOMPARE(result.step.has_value(), isStep);
    if (isStep) {
        QCOMPARE(result.step->lineNumber, 7);
    }
}

namespace {

struct Run
{
    int exitCode = -1;
    QString out;
    QString err;
    //! The window, as a run without a script leaves it.
    QImage picture;
};

// The script that README.md shows.
QByteArray linesOfReadme()
{
    QFile file(QStringLiteral(LUMEN_TEST_README));
    QByteArray lines;
    if (file.open(QIODevice::ReadOnly)) {
        bool isScript = false;
        for (QByteArray const& line : file.readAll().split('\n')) {
            isScript = isScript ? line.isEmpty() || line.startsWith("    ") : line == "lines such as";
            lines += isScript && line.startsWith("    ") ? line + '\n' : QByteArray();
        }
    }
    return lines;
}

// Runs the program on the lines of a script.
Run run(QStringList arguments, QByteArray const& script)
{
    QTemporaryDir folder;
    QString const file = folder.filePath(u"test.script"_s);
    if (!script.isNull()) {
        QFile lines(file);
        if (!lines.open(QIODevice::WriteOnly) || lines.write(script) < 0) {
            return {};
        }
        lines.close();
        arguments += {u"--script"_s, file};
    }
    QProcess program;
    program.setWorkingDirectory(folder.path());
    program.start(QStringLiteral(LUMEN_TEST_DEVHOST),
        QStringList{u"--headless"_s, u"--config-dir"_s, folder.path()} + arguments);
    program.waitForFinished(30000);
    return {program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1,
        QString::fromUtf8(program.readAllStandardOutput()), QString::fromUtf8(program.readAllStandardError()),
        QImage(folder.filePath(u"lumen-console.png"_s))};
}

} // namespace

void tst_DevHost::runs_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("script"); // null: none
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("says");

    auto const row = [](char const* name, QStringList const& arguments, QByteArray const& script,
                         int exitCode, char const* says) {
        QTest::newRow(name) << arguments << script << exitCode << QString::fromUtf8(says);
    };
    row("help", {u"--help"_s}, {}, 0, "desktop rename-scene SCENE NAME");
    row("tour", {}, {}, 0, "Done:");
    row("the lines of README.md", {}, linesOfReadme(), 0, "Done: 3 expectations held");
    row("no place for a picture", {u"--picture"_s, u"/nowhere/a.png"_s}, "expect onQueryScenes", 1,
        "The picture /nowhere/a.png cannot be written.");
    row("picture", {u"--picture"_s, u"lumen-console.png"_s}, "expect onQueryScenes", 0,
        "picture: lumen-console.png");
    row("empty script", {}, "\n# nothing\n", 0, "Done: 0 expectations");
    row("all holds", {},
        "expect onQueryScenes {\"list\":[{}]}\nexpect-led STREAM off\nquit\ndesktop scene Nowhere", 0,
        "Done: 2 expectations held");
    row("size of the model", {u"--scenes"_s, u"3"_s, u"--items"_s, u"2"_s, u"--audio"_s, u"1"_s},
        "expect onQueryScenes {\"list\":[{\"name\":\"Scene 3\",\"nodes\":[{},{}]}]}", 0,
        "3 scenes with 6 nodes");
    row("something else came", {}, "expect onQueryStreamingStatus {\"streamingStatus\":\"live\"} within 300",
        1, "came last with this task: {\"streamingStatus\":\"offline\",\"task\":\"onQueryStreamingStatus\"}");
    row("nothing of the kind came", {}, "expect onQueryCollections within 300", 1,
        "came: nothing with this task, but");
    row("the LED stays dark", {}, "expect onQueryScenes\nexpect-led STREAM on within 100", 1,
        "test.script:2:1: expect-led STREAM on");
    row("wrong lines", {}, "log a\n\nmake coffee\ndesktop scene Nowhere\ntask dance\n", 2,
        "test.script:3:1: \"make\" is no command");
    row("and the last of them", {}, "log a\n\nmake coffee\ndesktop scene Nowhere\ntask dance\n", 2,
        "test.script:5:6: \"dance\" is no TASK");
    row("no such scene", {}, "desktop scene Nowhere", 2,
        "test.script:1:1: desktop scene Nowhere: \"Nowhere\" is none of \"Starting Soon");
    row("wrong line behind the end", {}, "desktop scene Nowhere\nquit\nmake coffee", 2,
        "test.script:3:1: \"make\"");
    row("script without a name", {u"--script"_s, QString()}, {}, 2, "--script needs a file");
    row("no such script", {u"--script"_s, u"/nowhere"_s}, {}, 2, "The script /nowhere cannot be read.");
    row("unknown option", {u"--dance"_s}, {}, 2, "dance");
    row("stray word", {u"dance"_s}, {}, 2, "What is \"dance\"?");
    row("no number", {u"--scenes"_s, u"many"_s}, {}, 2, "--scenes takes a number from 1");
    row("port without a token", {u"--desktop-port"_s, u"59650"_s}, {}, 2, "go together");
    row("token without a port", {u"--desktop-token-file"_s, QStringLiteral(LUMEN_TEST_README)}, {}, 2,
        "go together");
    row("two tokens",
        {u"--desktop-port"_s, u"1"_s, u"--desktop-token"_s, u"t"_s, u"--desktop-token-file"_s, u"f"_s}, {}, 2,
        "two ways");
    row("no such token file", {u"--desktop-port"_s, u"1"_s, u"--desktop-token-file"_s, u"/nowhere"_s}, {}, 2,
        "The token file /nowhere cannot be read");
    row("empty token file", {u"--desktop-port"_s, u"1"_s, u"--desktop-token-file"_s, u"/dev/null"_s}, {}, 2,
        "The token file /dev/null cannot be read or is empty");
    row("port and size", {u"--desktop-port"_s, u"1"_s, u"--desktop-token"_s, u"t"_s, u"--audio"_s, u"2"_s},
        {}, 2, "are for the stand-in");
    row("tour of a real application", {u"--desktop-port"_s, u"1"_s, u"--desktop-token"_s, u"t"_s}, {}, 2,
        "needs a --script");
    row("no folder", {u"--config-dir"_s, QString()}, "quit", 2, "--config-dir needs a folder");
    row("waits for what can be chosen", {},
        "desktop stop\nplace mute\ndesktop start\nchoose 0 dropdownAudioList Mic/Aux\n"
        "expect-settings 0 {\"audio_source_name\":\"Mic/Aux\"}",
        0, "Done: 1");
    row("cannot be chosen", {},
        "place mute\nexpect onQueryAudioList {\"list\":[{}]}\nchoose 0 dropdownAudioList No within 50", 1,
        "but \"Desktop Audio\", \"Mic/Aux\"");
    row("is not there", {}, "place mute\ntype 0 no x within 0", 1, "but lineEdtPluginTitle");
    row("after many lists", {},
        "expect onQueryAudioList\ndesktop stream on\nexpect-led STREAM on\n" +
            QByteArray("desktop drag Webcam\n").repeated(300) +
            "desktop record on\nexpect-led RECORD on\n"
            "expect onQueryStreamingStatus {\"streamingStatus\":\"starting\"}",
        0, "Done: 4");
    row("after more than is kept", {},
        "expect onQueryAudioList\ntask toggleRecordingStatus\nexpect-led RECORD on\n" +
            QByteArray("task queryStreamingStatus\n").repeated(2000) +
            "task toggleRecordingStatus\nexpect-led RECORD off\n"
            "expect onQueryRecordingStatus {\"recordingStatus\":\"recording\"} within 0",
        1, "came last with this task: {\"recordingStatus\":");
    row("a wrong token", {}, "expect onQueryAudioList\nhost reconnect wrong\nwait 500", 0,
        "the stand-in refuses a client: its token is wrong");
    row("control of a real application", {u"--desktop-port"_s, u"1"_s, u"--desktop-token"_s, u"t"_s},
        "desktop stop", 2, "a running Streamlabs Desktop is used");
    row("no library", {u"--plugin"_s, u"/nowhere/lib"_s}, {}, 2, "/nowhere/lib");
    QString const faulty = QStringLiteral(LUMEN_TEST_FAULTY_LIBRARY);
    row("check", {u"--check"_s, QStringLiteral(LUMEN_TEST_LIBRARY)}, {}, 0, "Done: nothing is amiss");
    row("check of no package", {u"--check"_s, QStringLiteral(LUMEN_TEST_QT_LIBRARY)}, {}, 1,
        "Amiss: library");
    row("check and script", {u"--check"_s, faulty}, "quit", 2, "neither a script");
    for (char const* amiss : {"no \"category\"; no \"title\"; no \"icon\"; no version; action 0 has no",
             "faulty.one is there twice", "labels, ko_KR                     no text for LAB_ONE",
             "it has no panel", "it has 1 titles and 2 icons", ":/nowhere.png is missing",
             ":/qt-project.org is no picture", "AMISS  faulty.none                       it cannot be made",
             "AMISS  memory"}) {
        row(amiss, {u"--check"_s, faulty}, {}, 1, amiss);
    }
    row("not a package", {u"--plugin"_s, QStringLiteral(LUMEN_TEST_QT_LIBRARY)}, {}, 2,
        "exports no function \"sdk\"");
}

void tst_DevHost::runs()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, script);
    QFETCH(int, exitCode);
    QFETCH(QString, says);
    Run const result = run(arguments, script);
    QVERIFY2(result.exitCode == exitCode, qPrintable(result.out + result.err));
    QVERIFY2((result.out + result.err).contains(says), qPrintable(result.out + result.err));
    QCOMPARE(!result.picture.isNull(), result.out.contains("The window's picture: "_L1));
}

void tst_DevHost::speaksJson()
{
    Run const result =
        run({u"--json"_s}, "expect onQueryScenes {\"list\":[{}]}\ndesktop stream on\nexpect-led STREAM on\n"
                           "host disconnect\nexpect onStreamlabsAuthResult {\"authorized\":false}\nwait 1\n"
                           "place mute\nsettings 0 {\"titlelist\":[\"Off\",\"On\"]}\n"
                           "expect-key 0 {\"title\":\"Off\"}\n");
    QCOMPARE(result.exitCode, 0);
    QHash<QString, QList<QJsonObject>> events;
    for (auto const& line : result.out.split(u'\n', Qt::SkipEmptyParts)) {
        QJsonObject const event = QJsonDocument::fromJson(line.toUtf8()).object();
        QVERIFY2(!event.isEmpty(), qPrintable(line));
        events[event.value("event"_L1).toString()].append(event);
    }
    QVERIFY(result.out.indexOf("onQueryScenes\""_L1) < result.out.indexOf("\"held\""_L1)); // what it led to
    QCOMPARE(
        events.value(u"publication"_s).first().value("payload"_L1).toObject().value("authorized"_L1), true);
    QVERIFY(events.value(u"led"_s).contains(
        json(R"({"event":"led","app":"SLOBS","function":"STREAM","on":true})")));
    QCOMPARE(events.value(u"link"_s),
        QList({json(R"({"event":"link","connected":true})"), json(R"({"event":"link","connected":false})")}));
    QVERIFY(events.value(u"log"_s).contains(json(
        R"({"event":"log","level":"info","category":"default","text":"connected to Streamlabs server"})")));
    QCOMPARE(events.value(u"step"_s).size(), 9);
    QCOMPARE(events.value(u"held"_s).size(), 4);
    QStringList titles;
    for (auto const& key : events.value(u"key"_s)) {
        titles.append(key.value("title"_L1).toString());
    }
    titles.removeDuplicates();
    QCOMPARE(titles, QStringList({u"Unmute"_s, u"Off"_s}));
    QCOMPARE(
        events.value(u"finished"_s), QList({json(R"({"event":"finished","exit":0,"held":4,"problem":""})")}));
}

void tst_DevHost::takesLinesAsTheyCome()
{
    QProcess program;
    program.start(QStringLiteral(LUMEN_TEST_DEVHOST), {u"--headless"_s, u"--script"_s, u"-"_s});
    QByteArray out;
    auto const says = [&](char const* text) {
        return QTest::qWaitFor([&] { return (out += program.readAllStandardOutput()).contains(text); });
    };
    program.write("expect onQueryScenes\n");
    QVERIFY(says("as expected"));
    program.write("task toggleRecording");
    program.write("Status\nexpect-led RECORD on\n");
    QVERIFY(says("LED RECORD                on"));
    program.write("log without a line end");
    program.closeWriteChannel();
    QVERIFY(says("Done: 2 expectations held"));
    QTRY_COMPARE(program.state(), QProcess::NotRunning);
    QCOMPARE(program.exitCode(), 0);
}

// One development host's stand-in is the other one's running Streamlabs Desktop.
void tst_DevHost::usesARunningDesktop()
{
    QProcess desktop;
    desktop.start(
        QStringLiteral(LUMEN_TEST_DEVHOST), {u"--headless"_s, u"--script"_s, u"-"_s, u"--verbose"_s});
    desktop.write("desktop token secret\nexpect onQueryScenes\n");
    QString err;
    QRegularExpressionMatch port;
    QVERIFY(QTest::qWaitFor([&] {
        err += QString::fromUtf8(desktop.readAllStandardError());
        port = QRegularExpression(u"listening on 127.0.0.1:(\\d+)\n"_s).match(err);
        return port.hasMatch();
    }));

    QTemporaryFile token;
    QVERIFY(token.open() && token.write("secret\r\n") > 0 && token.flush());
    // The environment counts where no option does.
    for (auto const& [environment, option] :
        {std::pair("wrong", QStringList{u"--desktop-token-file"_s, token.fileName()}),
            {"wrong", {u"--desktop-token"_s, u"secret"_s}}, {"secret", {}}}) {
        qputenv("LUMEN_DESKTOP_TOKEN", environment);
        Run const result = run(QStringList{u"--desktop-port"_s, port.captured(1)} + option,
            "expect onStreamlabsAuthResult {\"authorized\":true}\nexpect onQueryStreamingStatus\n"
            "task toggleStreamingStatus\nexpect onQueryStreamingStatus\n");
        QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
    }
    qunsetenv("LUMEN_DESKTOP_TOKEN");
    desktop.closeWriteChannel();
    QTRY_COMPARE(desktop.state(), QProcess::NotRunning);
}

void tst_DevHost::keepsKeysToTheirOwner()
{
    QTemporaryDir folder;
    QString const file = folder.filePath(u"keys.json"_s);
    QFile::Permissions const owners =
        QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;
    for (auto const* action : {"mute", "scene"}) { // a new file, and one that others may read
        Run const result = run({u"--config-dir"_s, folder.path()}, "place "_ba + action);
        QVERIFY2(result.exitCode == 0, qPrintable(result.out + result.err));
        QVERIFY(QFile(file).size() > 0);
        QCOMPARE(QFile::permissions(file), owners);
        QVERIFY(QFile::setPermissions(file, owners | QFile::ReadGroup | QFile::ReadOther));
    }
}

QTEST_GUILESS_MAIN(tst_DevHost)
#include "tst_DevHost.moc"
