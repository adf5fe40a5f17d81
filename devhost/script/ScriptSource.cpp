#include "devhost/script/ScriptSource.h"

#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <cstdio>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

using namespace Qt::StringLiterals;

ScriptSource::ScriptSource(QObject* parent) : QObject(parent) {}

ScriptSource::~ScriptSource() = default;

bool ScriptSource::read(QString const& file)
{
    if (file != "-"_L1) {
        QFile script(file);
        if (!script.open(QIODevice::ReadOnly)) {
            return false;
        }
        take(script.readAll());
        end();
        return true;
    }
#ifdef Q_OS_UNIX
    // Not through a QFile: its reads wait until a whole buffer is there.
    notifier = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    connect(notifier.get(), &QSocketNotifier::activated, this, &ScriptSource::readAvailableInput);
    return true;
#else
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly)) {
        return false;
    }
    take(input.readAll());
    end();
    return true;
#endif
}

void ScriptSource::readAvailableInput()
{
#ifdef Q_OS_UNIX
    std::array<char, 4096> buffer{};
    auto const count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count > 0) {
        take(QByteArray(buffer.data(), count));
    } else {
        notifier->setEnabled(false);
        end();
    }
#endif
}

void ScriptSource::take(QByteArray const& bytes)
{
    incomplete += bytes;
    for (auto end = incomplete.indexOf('\n'); end >= 0; end = incomplete.indexOf('\n')) {
        QString const line = QString::fromUtf8(incomplete.constData(), end);
        incomplete.remove(0, end + 1);
        emit lineRead(line, ++lineNumber);
    }
}

void ScriptSource::end()
{
    if (!incomplete.isEmpty()) {
        emit lineRead(QString::fromUtf8(incomplete), ++lineNumber);
        incomplete.clear();
    }
    emit ended();
}
