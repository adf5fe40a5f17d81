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
    //! What must have come from the service.
    struct Expectation
    {
        //! The "task" of a publication, or the function of an LED ("STREAM", "RECORD").
        QString name;
        //! Members that the publication must include.
        QJsonObject members;
        //! Whether the LED must be lit; without a value a publication is expected.
        std::optional<bool> lit;
    };

    int lineNumber = 0;
    //! The line as it was written, without blanks around it.
    QString text;
    //! Does something, or looks at something. Answers with what is wrong, or with nothing.
    std::function<QString(DevHost&)> action;
    std::optional<Expectation> expectation;
    //! How long to wait for what is expected, or for the action to become possible. Without a value an action
    //! must be possible at once.
    std::optional<int> withinMs;
    //! Whether it counts among the expectations that held.
    bool expects = false;
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
    //! What is wrong with the line, and what would have been right; empty when it is good.
    QString error;
    //! Where, counted from 1.
    qsizetype column = 1;
};

Result parse(QString const& line, int lineNumber);

//! The beginning of \a object, for people.
QString excerpt(QJsonObject const& object);

//! The forms of all lines with a word on each, for the program's help.
QStringList help();

} // namespace ScriptParser
