#pragma once

#include <QObject>
#include <QString>

//! The host parameters that every part of the package needs, one object per process image of the library.
//!
//! Written once by the package's `init` before anything reads it, on the host's GUI thread; not locked.
//! Made at first use, destroyed when the library is unloaded.
class ZoLumenProxy : public QObject
{
    Q_OBJECT

public:
    //! TCP port of the host's relay on 127.0.0.1; 0 until set.
    qint32 port = 0;
    //! The host's folder for package data, absolute; empty until set.
    QString configDir;

    static ZoLumenProxy& getInstance();

private:
    ZoLumenProxy() = default;
};
