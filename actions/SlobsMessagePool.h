#pragma once

#include <QJsonObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <optional>
#include <vector>

//! Parses each relay message once for all agents of the process.
//!
//! Every key has an agent, every agent its own connection, and the relay sends all of them the same text: of
//! 2,000 items that is 1.6 ms once instead of 32 times with 32 keys. All who handle a message share its data,
//! by which SlobsMessages knows that it has decoded it before.
//!
//! The pool holds the messages that not all agents have taken yet, for a second at most (an agent may be
//! waiting for its connection and never take any), and 32 of them at most. It lives as long as an agent does.
//! GUI thread only.
class SlobsMessagePool
{
public:
    //! The pool of this process. Each agent keeps one pointer, which is also how the pool counts the agents.
    static std::shared_ptr<SlobsMessagePool> shared();

    //! The object that \a text holds, parsed now or when another agent took it; nothing when it is none.
    std::optional<QJsonObject> take(QString const& text);

private:
    struct Entry
    {
        QString text;
        std::optional<QJsonObject> object;
        long taken = 0;
    };

    SlobsMessagePool();

    std::weak_ptr<SlobsMessagePool> self;
    std::vector<Entry> entries;
    QTimer expiry;
};
