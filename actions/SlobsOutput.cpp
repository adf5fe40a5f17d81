#include "actions/SlobsOutput.h"

#include "actions/SlobsAgent.h"

using namespace Qt::StringLiterals;
using namespace SlobsAgentPrivate;

// Titles and images travel in settings documents that the host keeps, so they are no literals of the library.

SlobsOutput const& SlobsOutput::stream()
{
    static SlobsOutput const output{
        .titles = {QString::fromLatin1("Stop Stream"), QString::fromLatin1("Stream")},
        .icons = {QString::fromLatin1(":/Streamlabs/images/slobs_stream_off.png"),
            QString::fromLatin1(":/Streamlabs/images/slobs_stream_on.gif")},
        .resultTask = kQueryStreamingStatusResult,
        .decode = &SlobsAgent::fromStreamingStatus,
        .isOn = &SlobsAgent::isStreaming,
        .query = &SlobsAgent::queryStreamingStatus,
        .toggle = &SlobsAgent::toggleStreaming,
    };
    return output;
}

SlobsOutput const& SlobsOutput::record()
{
    static SlobsOutput const output{
        .titles = {QString::fromLatin1("Stop Record"), QString::fromLatin1("Record")},
        .icons = {QString::fromLatin1(":/Streamlabs/images/slobs_record_off.png"),
            QString::fromLatin1(":/Streamlabs/images/slobs_record_on.png")},
        .resultTask = kQueryRecordingStatusResult,
        .decode = &SlobsAgent::fromRecordingStatus,
        .isOn = &SlobsAgent::isRecording,
        .query = &SlobsAgent::queryRecordingStatus,
        .toggle = &SlobsAgent::toggleRecording,
    };
    return output;
}
