#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class DevHost;

//! What one line of a script asks for, taken apart and checked.
struct ScriptStep
{
    //! A condition that must come true in time.
    struct Expectation
    {
        enum class Kind { Publication, Led, Key, Settings, Panel };

        Kind kind = Kind::Publication;
        //! The "task" of the publication, or the function of the LED ("STREAM", "RECORD").
        QString name;
        //! Members that the publication, the key's face or its settings must include.
        QJsonObject members;
        int key = 0;
        //! The widget of the key's panel.
        QString objectName;
        bool on = false;
        int withinMs = 0;
    };

    int lineNumber = 0;
    //! The line as it was written, without blanks around it.
    QString text;
    //! Does something at once. Answers with what is wrong, or with nothing.
    std::function<QString(DevHost&)> action;
    std::optional<Expectation> expectation;
    std::optional<int> waitMs;
    std::optional<QString> note;
    bool quit = false;
};

//! Reads the lines of scripts for the development host.
//!
//! Words are separated by blanks; a word in double quotes is a JSON string and may hold blanks; `{…}` is a
//! JSON object. `#` at the beginning of a line makes it a comment.
namespace ScriptParser {

struct Result
{
    //! Nothing for an empty line and a comment.
    std::optional<ScriptStep> step;
    //! What is wrong with the line; empty when it is good.
    QString error;
};

Result parse(QString const& line, int lineNumber);

//! The forms of all lines with a word on each, for the program's help.
QStringList help();

} // namespace ScriptParser
