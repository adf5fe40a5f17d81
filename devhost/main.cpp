// lumen-devhost: runs the action package without the console and without Streamlabs Desktop.

#include "devhost/CommandLine.h"
#include "devhost/script/ScriptRunner.h"
#include "devhost/script/ScriptSource.h"
#include "devhost/window/DarkTheme.h"
#include "devhost/window/MainWindow.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr int kExitUsage = 2;

// One run of the program, between its first line and its last.
class Run : public QObject
{
public:
    explicit Run(CommandLine const& commandLine);

    //! The exit code.
    int execute();

private:
    bool start();
    void onScriptFinished(ScriptRunner::Outcome outcome, QString const& why);
    void takePicture();
    void fail(int code, QString const& why);

    CommandLine options;
    EventReport report;
    DevHost devHost;
    ScriptRunner runner;
    ScriptSource source;
    std::unique_ptr<MainWindow> mainWindow;
    bool scriptRuns = false;
    int exitCode = 0;
    QString failure;
};

Run::Run(CommandLine const& commandLine)
    : options(commandLine)
    , report(commandLine.format, commandLine.verbose)
    , runner(devHost, options.script == "-"_L1 ? u"standard input"_s : options.script)
{
    if (auto const& size = commandLine.size) {
        devHost.standIn().model().generate(size->scenes, size->items, size->audio);
    }
    report.watch(devHost);
    report.watch(runner);
    connect(&runner, &ScriptRunner::finished, this, &Run::onScriptFinished);
    connect(&source, &ScriptSource::lineRead, &runner, &ScriptRunner::addLine);
    connect(&source, &ScriptSource::ended, &runner, &ScriptRunner::endOfScript);
}

int Run::execute()
{
    if (start()) {
        QCoreApplication::exec();
        if (scriptRuns) {
            fail(1, u"The window was closed before the script had ended."_s);
        } else if (options.script.isEmpty()) {
            takePicture();
        }
        if (!devHost.stop()) {
            fail(1, u"The library stayed in memory when it was unloaded."_s);
        }
    }
    report.finish(exitCode, runner.expectationsHeld(), failure);
    return exitCode;
}

bool Run::start()
{
    bool const scripted = !options.script.isEmpty();
    if (scripted && !source.read(options.script)) {
        fail(kExitUsage, u"The script %1 cannot be read."_s.arg(options.script));
        return false;
    }
    if (!devHost.start(options.host)) {
        fail(kExitUsage, devHost.errorString());
        return false;
    }
    report.watch(devHost.console());
    if (!options.headless || !options.picture.isEmpty()) {
        auto const& host = options.host;
        mainWindow = std::make_unique<MainWindow>(
            devHost, host.keepsKeys && !scripted ? host.configDir + u"/window.ini"_s : QString());
        mainWindow->show();
    }
    if (scripted) {
        scriptRuns = true;
        connect(&devHost, &DevHost::ready, &runner, &ScriptRunner::start);
    }
    return true;
}

void Run::onScriptFinished(ScriptRunner::Outcome outcome, QString const& why)
{
    scriptRuns = false;
    if (outcome != ScriptRunner::Outcome::Held) {
        fail(static_cast<int>(outcome), why);
    }
    takePicture();
    if (options.headless || runner.hasQuit()) {
        QCoreApplication::quit();
    } else {
        mainWindow->tell(
            why.isEmpty() ? u"The script has run: every expectation held."_s : why.section(u'\n', 0, 0));
    }
}

void Run::takePicture()
{
    QString const& file = options.picture;
    if (file.isEmpty()) {
        return;
    }
    if (mainWindow->savePicture(file)) {
        report.note(u"The window's picture: %1"_s.arg(file));
    } else if (QString const problem = u"The picture %1 cannot be written."_s.arg(file);
        options.needsPicture) {
        fail(1, problem);
    } else {
        report.note(problem);
    }
}

// The first problem counts.
void Run::fail(int code, QString const& why)
{
    if (exitCode == 0) {
        exitCode = code;
        failure = why;
    }
}

//! Looks a package library over. The exit code.
int check(CommandLine const& options)
{
    EventReport report(options.format, options.verbose);
    QStringList amiss;
    for (auto const& finding : PackageCheck::run(options.check, options.host.configDir)) {
        report.tell(finding);
        if (!finding.good) {
            amiss.append(finding.what);
        }
    }
    int const exitCode = amiss.isEmpty() ? 0 : 1;
    report.finish(exitCode, {}, amiss.isEmpty() ? QString() : u"Amiss: %1"_s.arg(amiss.join(u", "_s)));
    return exitCode;
}

//! Qt ends the program where there is none.
bool hasDisplay()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
#else
    return true;
#endif
}

//! Lets Qt go on where it would end the program, when a display does not answer. False when the user has
//! chosen the platform.
bool fallsBackWithoutDisplay()
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    return !qEnvironmentVariableIsSet("QT_QPA_PLATFORM") &&
           qputenv("QT_QPA_PLATFORM", "xcb;wayland;offscreen");
#else
    return false;
#endif
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication::setApplicationName(u"lumen-devhost"_s);
    // Qt has a --plugin of its own and would take ours away.
    QStringList arguments;
    std::transform(argv, argv + argc, std::back_inserter(arguments),
        [](char const* word) { return QString::fromLocal8Bit(word); });
    int programNameOnly = 1;

    CommandLine commandLine;
    {
        QCoreApplication const withoutDisplay(programNameOnly, argv);
        if (QString const problem = commandLine.read(arguments); !problem.isEmpty()) {
            std::fprintf(stderr, "%s\nlumen-devhost --help tells more.\n", qPrintable(problem));
            return kExitUsage;
        }
    }
    if (commandLine.headless) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (!hasDisplay()) {
        std::fprintf(stderr, "There is no display. lumen-devhost --headless needs none.\n");
        return kExitUsage;
    }
    bool const mustAnswer = fallsBackWithoutDisplay();
    QApplication app(programNameOnly, argv);
    if (mustAnswer && QApplication::platformName() == "offscreen"_L1) {
        std::fprintf(stderr, "The display does not answer. lumen-devhost --headless needs none.\n");
        return kExitUsage;
    }
    if (!commandLine.check.isEmpty()) {
        return check(commandLine);
    }
    if (!commandLine.contrast.isEmpty()) {
        bool const isLight = commandLine.contrast == "light"_L1;
        DarkTheme::setHighContrast(isLight ? Qt::black : Qt::white, isLight ? Qt::white : Qt::black);
    }
    DarkTheme::apply(app);
    return Run(commandLine).execute();
}
