// lumen-devhost: runs the action package without the console and without Streamlabs Desktop.

#include "devhost/CommandLine.h"
#include "devhost/DarkTheme.h"
#include "devhost/MainWindow.h"
#include "devhost/ScriptRunner.h"
#include "devhost/ScriptSource.h"

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr int exitUsage = 2;

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

    CommandLine m_commandLine;
    EventReport m_report;
    DevHost m_host;
    ScriptRunner m_runner;
    ScriptSource m_source;
    std::unique_ptr<MainWindow> m_window;
    bool m_scriptRuns = false;
    int m_exitCode = 0;
    QString m_problem;
};

Run::Run(CommandLine const& commandLine)
    : m_commandLine(commandLine), m_report(commandLine.format, commandLine.verbose), m_runner(m_host)
{
    if (auto const& size = commandLine.size) {
        m_host.standIn().model().generate(size->scenes, size->items, size->audio);
    }
    m_report.watch(m_host);
    m_report.watch(m_runner);
    connect(&m_runner, &ScriptRunner::finished, this, &Run::onScriptFinished);
    connect(&m_source, &ScriptSource::lineRead, &m_runner, &ScriptRunner::addLine);
    connect(&m_source, &ScriptSource::ended, &m_runner, &ScriptRunner::endOfScript);
}

int Run::execute()
{
    if (start()) {
        QCoreApplication::exec();
        if (m_scriptRuns) {
            fail(1, u"The window was closed before the script had ended."_s);
        } else if (m_commandLine.script.isEmpty()) {
            takePicture();
        }
        if (!m_host.stop()) {
            fail(1, u"The library stayed in memory when it was unloaded."_s);
        }
    }
    m_report.finish(m_exitCode, m_runner.expectationsHeld(), m_problem);
    return m_exitCode;
}

bool Run::start()
{
    bool const scripted = !m_commandLine.script.isEmpty();
    if (scripted && !m_source.read(m_commandLine.script)) {
        fail(exitUsage, u"The script %1 cannot be read."_s.arg(m_commandLine.script));
        return false;
    }
    if (!m_host.start(m_commandLine.host)) {
        fail(exitUsage, m_host.errorString());
        return false;
    }
    m_report.watch(m_host.console());
    if (!m_commandLine.headless || !m_commandLine.picture.isEmpty()) {
        auto const& host = m_commandLine.host;
        m_window = std::make_unique<MainWindow>(
            m_host, host.keepsKeys && !scripted ? host.configDir + u"/window.ini"_s : QString());
        m_window->show();
    }
    if (scripted) {
        m_scriptRuns = true;
        connect(&m_host, &DevHost::ready, &m_runner, &ScriptRunner::start);
    }
    return true;
}

void Run::onScriptFinished(ScriptRunner::Outcome outcome, QString const& why)
{
    m_scriptRuns = false;
    if (outcome != ScriptRunner::Outcome::Held) {
        fail(static_cast<int>(outcome), why);
    }
    takePicture();
    if (m_commandLine.headless || m_runner.hasQuit()) {
        QCoreApplication::quit();
    } else {
        m_window->tell(
            why.isEmpty() ? u"The script has run: every expectation held."_s : why.section(u'\n', 0, 0));
    }
}

void Run::takePicture()
{
    QString const& file = m_commandLine.picture;
    if (file.isEmpty()) {
        return;
    }
    if (m_window->savePicture(file)) {
        m_report.note(u"The window's picture: %1"_s.arg(file));
    } else if (QString const problem = u"The picture %1 cannot be written."_s.arg(file);
        m_commandLine.needsPicture) {
        fail(1, problem);
    } else {
        m_report.note(problem);
    }
}

// The first problem counts.
void Run::fail(int code, QString const& why)
{
    if (m_exitCode == 0) {
        m_exitCode = code;
        m_problem = why;
    }
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
            return exitUsage;
        }
    }
    if (commandLine.headless) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    } else if (!hasDisplay()) {
        std::fprintf(stderr, "There is no display. lumen-devhost --headless needs none.\n");
        return exitUsage;
    }
    bool const mustAnswer = fallsBackWithoutDisplay();
    QApplication app(programNameOnly, argv);
    if (mustAnswer && QApplication::platformName() == "offscreen"_L1) {
        std::fprintf(stderr, "The display does not answer. lumen-devhost --headless needs none.\n");
        return exitUsage;
    }
    DarkTheme::apply(app);
    return Run(commandLine).execute();
}
