#pragma once

#include "streamlabs/StreamlabsApi.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>
#include <variant>
#include <vector>

//! One message from the relay, parsed, with the records of its "list" once somebody has asked for them.
class SlobsMessage
{
public:
    //! \a text is UTF-8.
    explicit SlobsMessage(QByteArray const& text);

    //! Nothing when the text was not a JSON object.
    std::optional<QJsonObject> const& object() const { return content; }
    //! The records in "list", decoded at the first call; empty when it is missing or not an array. Elements
    //! that are not objects count as empty ones. A message is always asked for the same type of record, that
    //! of its task.
    template <typename Record>
    QList<Record> const& list();

private:
    std::optional<QJsonObject> content;
    std::variant<std::monostate, QList<StreamlabsApiPrivate::Scene>,
        QList<StreamlabsApiPrivate::CollectionSchema>, QList<StreamlabsApiPrivate::AudioSource>>
        records;
};

//! Parses and decodes each relay message once for all agents of the process.
//!
//! Every key has an agent, every agent its own connection, and the relay sends all of them the same text:
//! with 32 keys and a list of 2,000 items that would be 32 times some milliseconds on the GUI thread. The
//! pool holds the messages that not all agents have taken yet, for a second at most (an agent may be waiting
//! for its connection and never take any), and 32 of them at most. It lives as long as an agent does. GUI
//! thread only.
class SlobsMessagePool
{
public:
    //! The pool of this process. Each agent keeps one pointer, which is also how the pool counts the agents.
    static std::shared_ptr<SlobsMessagePool> shared();

    //! The message \a text, parsed now or when another agent took it.
    std::shared_ptr<SlobsMessage> take(QString const& text);

    //! The records in the "list" of \a message: those of the message being handled when it is that one.
    template <typename Record>
    static QList<Record> list(QJsonObject const& message);

    //! Marks a message as the one being handled, for as long as the object lives. Nests.
    class Handling
    {
    public:
        explicit Handling(std::shared_ptr<SlobsMessage> message);
        ~Handling();
        Handling(Handling const&) = delete;
        Handling& operator=(Handling const&) = delete;

    private:
        std::shared_ptr<SlobsMessage> previous;
    };

private:
    friend class SlobsMessage;

    //! Decodes \a list; a scene that was the same in the list before is taken from there.
    QList<StreamlabsApiPrivate::Scene> decodeScenes(QJsonArray const& list);

    struct Entry
    {
        bool isOf(QString const& text) const;

        //! The text. Every agent compares its own with it, some hundred kilobytes, and the less memory that
        //! takes, the sooner it is done.
        QByteArray utf8;
        //! Of the text in UTF-16.
        qsizetype length = 0;
        std::shared_ptr<SlobsMessage> message;
        qsizetype taken = 0;
    };

    SlobsMessagePool();

    std::weak_ptr<SlobsMessagePool> self;
    std::vector<Entry> entries;
    //! What was decoded last.
    QJsonArray sceneList;
    QList<StreamlabsApiPrivate::Scene> scenes;
    QTimer expiry;
};
