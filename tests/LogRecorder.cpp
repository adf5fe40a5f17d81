#include "tests/LogRecorder.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

LogRecorder* current = nullptr;

} // namespace

LogRecorder::LogRecorder() : m_previous(qInstallMessageHandler(&LogRecorder::record))
{
    current = this;
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(m_previous);
    current = nullptr;
}

void LogRecorder::record(
    QtMsgType type, [[maybe_unused]] QMessageLogContext const& context, QString const& text)
{
    QString const level = type == QtDebugMsg     ? u"debug"_s
                          : type == QtInfoMsg    ? u"info"_s
                          : type == QtWarningMsg ? u"warning"_s
                                                 : u"critical"_s;
    current->m_lines.append(level + u": "_s + text);
    if (type == QtFatalMsg) {
        current->m_previous(type, context, text);
    }
}

bool LogRecorder::take(QString const& part)
{
    auto const line = std::ranges::find_if(m_lines, [&](QString const& text) { return text.contains(part); });
    if (line == m_lines.end()) {
        return false;
    }
    m_lines.erase(line);
    return true;
}

qsizetype LogRecorder::count(QString const& part) const
{
    return std::ranges::count_if(m_lines, [&](QString const& text) { return text.contains(part); });
}

QStringList LogRecorder::problems() const
{
    QStringList lines = m_lines;
    lines.removeIf(
        [](QString const& line) { return line.startsWith("debug"_L1) || line.startsWith("info"_L1); });
    return lines;
}
