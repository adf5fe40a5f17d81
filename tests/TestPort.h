#pragma once

#include <QCoreApplication>

//! A port for a server that goes and comes back on it. No other process is given it meanwhile, as it would be
//! a port that listening on 0 has found (which are from 32768 on with Linux, from 49152 on elsewhere): this
//! server could not come back then, and clients that look for it would be let in by the wrong one.
inline quint16 ownPort()
{
    static int next = 0;
    constexpr int kPerProcess = 8;
    return static_cast<quint16>(
        10000 + QCoreApplication::applicationPid() % 2500 * kPerProcess + next++ % kPerProcess);
}
