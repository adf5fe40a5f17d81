#pragma once

#include <QJsonObject>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>
#include <QUndoStack>

class Console;

//! What can be undone on the console: placing, moving and removing actions, and every change of a key's
//! settings, by whomever. What happens in one turn of the event loop is one step; a title that is typed is
//! one step as well. Only the documents are kept, so an undone picture is there again as long as its file is,
//! which nobody deletes.
class ConsoleHistory : public QObject
{
    Q_OBJECT

public:
    //! Follows \a console, which must outlive this object.
    explicit ConsoleHistory(Console& console, QObject* parent = nullptr);
    ~ConsoleHistory() override;

    //! Its texts name the steps: "removing Mute", "the title of key 3".
    QUndoStack& stack() { return steps; }
    //! Begins with the keys as they are; what was before is forgotten.
    void restart();

private:
    class Step;

    //! No action: a free key.
    struct KeyState
    {
        QString actionId;
        QJsonObject settings;

        bool operator==(KeyState const&) const = default;
    };
    using KeyStates = QMap<int, KeyState>;

    KeyState stateOf(int index) const;
    void note(int index);
    void record();
    void apply(KeyStates const& states);

    Console& watched;
    QUndoStack steps;
    //! The taken keys as of the last step.
    KeyStates known;
    QSet<int> touched;
    QTimer recording;
};
