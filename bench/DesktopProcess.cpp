#include "bench/DesktopProcess.h"

#include "devhost/fakes/StreamlabsStandIn.h"
#include "devhost/script/ScriptSource.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;

DesktopProcess::DesktopProcess(int scenes, int items)
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(),
        {u"--stand-in"_s, QString::number(scenes), QString::number(items)});
    if (!process.waitForReadyRead() || (listeningPort = process.readLine().trimmed().toUShort()) == 0) {
        std::fprintf(stderr, "no stand-in: %s\n", qPrintable(process.errorString()));
        std::exit(1);
    }
    QObject::connect(&process, &QProcess::readyRead, &process, [this] { readLines(); });
}

DesktopProcess::~DesktopProcess()
{
    process.disconnect();
    process.closeWriteChannel(); // it ends with its input
    process.waitForFinished();
}

void DesktopProcess::tell(QString const& line)
{
    process.write(line.toUtf8() + '\n');
    process.waitForBytesWritten();
}

void DesktopProcess::readLines()
{
    while (process.canReadLine()) {
        std::chrono::nanoseconds const since(process.readLine().trimmed().toLongLong());
        if (onSceneRequest) {
            onSceneRequest(Clock::time_point(std::chrono::duration_cast<Clock::duration>(since)));
        }
    }
}

int DesktopProcess::run(int scenes, int items)
{
    StreamlabsStandIn desktop;
    constexpr int kAudioDevices = 20;
    desktop.model().generate(scenes, items, kAudioDevices);
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
