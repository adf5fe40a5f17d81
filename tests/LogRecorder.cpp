#include "tests/LogRecorder.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

LogRecorder* current = nullptr;

} // namespace

LogRecorder::LogRecorder() : previous(qInstallMessageHandler(&LogRecorder::record))
{
    current = this;
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(previous);
    current = nullptr;
}

void LogRecorder::record(
    QtMsgType type, [[maybe_unused]] QMessageLogContext const& context, QString const& text)
{
    QString const level = type == QtDebugMsg     ? u"debug"_s
                          : type == QtInfoMsg    ? u"info"_s
                          : type == QtWarningMsg ? u"warning"_s
                                                 : u"critical"_s;
    current->recorded.append(level + u": "_s + text);
    if (type == QtFatalMsg) {
        current->previous(type, context, text);
    }
}

bool LogRecorder::take(QString const& part)
{
    auto const line =
        std::ranges::find_if(recorded, [&](QString const& text) { return text.contains(part); });
    if (line == recorded.end()) {
        return false;
    }
    recorded.erase(line);
    return true;
}

qsizetype LogRecorder::count(QString const& part) const
{
    return std::ranges::count_if(recorded, [&](QString const& text) { return text.contains(part); });
}

QStringList LogRecorder::problems() const
{
    QStringList lines = recorded;
    lines.removeIf(
        [](QString const& line) { return line.startsWith("debug"_L1) || line.startsWith("info"_L1); });
    return lines;
}
