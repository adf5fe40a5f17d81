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

#include <iterator>

using namespace Qt::StringLiterals;

class tst_DevHost : public QObject
{
    Q_OBJECT

private slots:
    void matchesJson();
    void parsesLines();
    void runs_data();
    void runs();
    void speaksJson();
    void takesLinesAsTheyCome();
    void usesARunningDesktop();
    void keepsKeysToTheirOwner();
};

namespace {

QStringList linesOf(QString const& file)
{
    QFile lines(QStringLiteral(LUMEN_TEST_FOLDER) + u'/' + file);
    return lines.open(QIODevice::ReadOnly) ? QString::fromUtf8(lines.readAll()).split(u'\n') : QStringList();
}

} // namespace

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

void tst_DevHost::parsesLines()
{
    int number = 0;
    auto const lines = linesOf(u"lines.txt"_s);
    for (auto line = lines.begin(); line != lines.end(); ++line) {
        auto const result = ScriptParser::parse(*line, ++number);
        bool const isWrong = std::next(line) != lines.end() && std::next(line)->startsWith(u'!');
        QString const told = u"! %1 %2"_s.arg(result.column).arg(result.error);
        QVERIFY2(result.error.isEmpty() != isWrong, qPrintable(*line + told));
        bool const isStep = !isWrong && !line->trimmed().isEmpty() && !line->startsWith(u'#');
        QVERIFY2(result.step.has_value() == isStep, qPrintable(*line));
        QVERIFY(!isStep || result.step->lineNumber == number);
        if (isWrong) {
            QVERIFY2(told.startsWith(*++line), qPrintable(told));
        }
    }
    QVERIFY(number > 40);
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
    QStringList const all = linesOf(u"../../README.md"_s);
    QByteArray lines;
    for (auto line = all.begin() + all.indexOf("lines such as"_L1) + 1;
        line != all.end() && (line->isEmpty() || line->startsWith("    "_L1)); ++line) {
        lines += line->toUtf8() + '\n';
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
    QTest::addColumn<QStringList>("says");

    QTest::newRow("the lines of README.md")
        << QStringList() << linesOfReadme() << 0 << QStringList{u"Done: 3 expectations held"_s};
    for (QString const& run : linesOf(u"runs.txt"_s).join(u'\n').split(u"\n== "_s).sliced(1)) {
        QStringList const lines = run.split(u'\n', Qt::SkipEmptyParts);
        QStringList arguments;
        QByteArray script;
        int exitCode = -1;
        QStringList says;
        for (QString const& line : lines.sliced(1)) {
            if (line.startsWith("$ "_L1)) {
                arguments = line.sliced(2).split(u' ');
                arguments.replaceInStrings(u"\"\""_s, QString());
                arguments.replaceInStrings(u"README"_s, QStringLiteral(LUMEN_TEST_FOLDER "/../../README.md"));
                arguments.replaceInStrings(u"FAULTY"_s, QStringLiteral(LUMEN_TEST_FAULTY_LIBRARY));
                arguments.replaceInStrings(u"LIBRARY"_s, QStringLiteral(LUMEN_TEST_LIBRARY));
                arguments.replaceInStrings(u"QT"_s, QStringLiteral(LUMEN_TEST_QT_LIBRARY));
            } else if (line.startsWith("= "_L1)) {
                exitCode = line.sliced(2).toInt();
            } else if (line.startsWith(": "_L1)) {
                says.append(line.sliced(2));
            } else {
                bool const repeats = line.startsWith(u'*');
                QString const text = repeats ? line.section(u' ', 1) : line;
                script += (text + u'\n')
                              .toUtf8()
                              .repeated(repeats ? line.sliced(1).section(u' ', 0, 0).toInt() : 1);
            }
        }
        QTest::newRow(qPrintable(lines.first())) << arguments << script << exitCode << says;
    }
}

void tst_DevHost::runs()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, script);
    QFETCH(QStringList, says);
    Run const result = run(arguments, script);
    QString const said = result.out + result.err;
    QTEST(result.exitCode, "exitCode");
    QVERIFY(!says.isEmpty());
    for (auto const& part : says) {
        QVERIFY2(said.contains(part), qPrintable(part + u" is not in:\n"_s + said));
    }
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
