#pragma once

#include <QProcess>
#include <QString>

#include <chrono>
#include <functional>

//! A stand-in for Streamlabs Desktop in a process of its own, as the real one is, so that what it costs does
//! not count. The process is this program again, started with "--stand-in SCENES ITEMS".
class DesktopProcess
{
public:
    using Clock = std::chrono::steady_clock; // the same in all processes

    //! Starts it, and waits until it listens.
    DesktopProcess(int scenes, int items);
    ~DesktopProcess();

    quint16 port() const { return listeningPort; }
    //! \a line: "drag ITEM" (60 times a second, until "drag"), "show ITEM" or "hide ITEM".
    void tell(QString const& line);

    //! Told when a request to switch the scene has arrived there.
    std::function<void(Clock::time_point)> onSceneRequest;

    //! What the process does. The exit code.
    static int run(int scenes, int items);

private:
    void readLines();

    QProcess process;
    quint16 listeningPort = 0;
};
