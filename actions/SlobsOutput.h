#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

class SlobsAgent;

//! What tells the two outputs of Streamlabs Desktop, the stream and the recording, apart: their actions are
//! the same in everything else.
struct SlobsOutput
{
    //! Per state; state 1 is shown while the output is on.
    QStringList titles;
    QStringList icons;
    //! The publication with the status.
    QString resultTask;
    void (*decode)(QJsonObject const& message, QString& status);
    bool (*isOn)(QString const& status);
    void (SlobsAgent::*query)();
    void (SlobsAgent::*toggle)();

    static SlobsOutput const& stream();
    static SlobsOutput const& record();
};
