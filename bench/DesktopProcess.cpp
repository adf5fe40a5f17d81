#include "bench/DesktopProcess.h"

#include "devhost/ScriptSource.h"
#include "devhost/StreamlabsStandIn.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

DesktopProcess::DesktopProcess(int scenes, int items)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QCoreApplication::applicationFilePath(),
        {u"--stand-in"_s, QString::number(scenes), QString::number(items)});
    if (!m_process.waitForReadyRead() || (m_port = m_process.readLine().trimmed().toUShort()) == 0) {
        std::fprintf(stderr, "no stand-in: %s\n", qPrintable(m_process.errorString()));
        std::exit(1);
    }
    QObject::connect(&m_process, &QProcess::readyRead, &m_process, [this] { readLines(); });
}

DesktopProcess::~DesktopProcess()
{
    m_process.disconnect();
    m_process.closeWriteChannel(); // it ends with its input
    m_process.waitForFinished();
}

void DesktopProcess::tell(QString const& line)
{
    m_process.write(line.toUtf8() + '\n');
    m_process.waitForBytesWritten();
}

void DesktopProcess::readLines()
{
    while (m_process.canReadLine()) {
        std::chrono::nanoseconds const since(m_process.readLine().trimmed().toLongLong());
        if (onSceneRequest) {
            onSceneRequest(Clock::time_point(std::chrono::duration_cast<Clock::duration>(since)));
        }
    }
}

int DesktopProcess::run(int scenes, int items)
{
    StreamlabsStandIn desktop;
    constexpr int audioDevices = 20;
    desktop.model().generate(scenes, items, audioDevices);
    if (!desktop.start()) {
        return 1;
    }
    auto const print = [](long long number) {
        std::printf("%lld\n", number);
        std::fflush(stdout);
    };
    QObject::connect(
        &desktop, &StreamlabsStandIn::requestReceived, &desktop, [print](QJsonObject const& request) {
            if (request.value("method"_L1) == "makeSceneActive"_L1) {
                print(std::chrono::nanoseconds(Clock::now().time_since_epoch()).count());
            }
        });
    QTimer mouse;
    QString dragged;
    mouse.setTimerType(Qt::PreciseTimer);
    mouse.setInterval(std::chrono::milliseconds(1000 / 60));
    mouse.callOnTimeout([&] { desktop.model().moveItem(dragged, {1, 1}); });
    ScriptSource input;
    QObject::connect(&input, &ScriptSource::lineRead, &desktop, [&](QString const& line) {
        QString const what = line.section(u' ', 0, 0);
        QString const item = line.section(u' ', 1);
        if (what == "drag"_L1) {
            dragged = item;
            item.isEmpty() ? mouse.stop() : mouse.start();
        } else {
            desktop.model().setItemVisible(item, what == "show"_L1);
        }
    });
    QObject::connect(&input, &ScriptSource::ended, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    print(desktop.port());
    input.read(u"-"_s);
    return QCoreApplication::exec();
}
