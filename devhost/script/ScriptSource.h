#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include <memory>

class QSocketNotifier;

//! Reads the lines of a script from a file or, as they come, from standard input.
class ScriptSource : public QObject
{
    Q_OBJECT

public:
    explicit ScriptSource(QObject* parent = nullptr);
    ~ScriptSource() override;

    //! Emits every line of \a file before it returns, "-" being standard input, which is read as it comes.
    //! False when the file cannot be read.
    bool read(QString const& file);

signals:
    //! \a number counts from 1.
    void lineRead(QString const& line, int number);
    void ended();

private:
    void readAvailableInput();
    void take(QByteArray const& bytes);
    void end();

    QByteArray incomplete;
    int lineNumber = 0;
    std::unique_ptr<QSocketNotifier> notifier;
};
