#pragma once

#include "devhost/host/ConsoleKey.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

class IBuiltInPackageLibrary;

//! The keys of the console: which action sits on which key, with its settings.
//!
//! Kept in "keys.json" in the configuration folder, {"version": 1, "keys": [{"index", "action", "settings"},
//! …]}, and written through a temporary file at every change, so that a crash at any moment leaves the last
//! whole state. Only its owner may read it.
class Console : public QObject
{
    Q_OBJECT

public:
    //! More keys than any console has.
    static constexpr int kMostKeys = 256;

    //! \a configDir: an existing folder, or empty for a console that forgets.
    explicit Console(QString configDir, QObject* parent = nullptr);
    ~Console() override;

    //! The package whose actions are placed, and the keys stored for them; null takes all keys off first.
    void setPackage(IBuiltInPackageLibrary* package);

    //! Full id of an action called by its id or by the last part of it or its name in the package: "stream",
    //! "mute", …. Empty when there is none.
    QString actionIdOf(QString const& action) const;

    //! The last part of the id of each action, which is enough to call it by.
    QStringList actionNames() const;

    //! Puts an action on a key that is free or not. False when there is no such action or key.
    bool place(int index, QString const& actionId, QJsonObject const& settings = {});
    //! Takes the action off. False when the key is free.
    bool remove(int index);
    //! Moves an action to another key; the two swap when that is taken.
    bool move(int from, int to);
    int firstFreeIndex() const;

    //! Null for a free key.
    ConsoleKey* key(int index) const;
    //! Indices of the keys that are taken, in order.
    QList<int> indices() const { return consoleKeys.keys(); }

    //! Have the faces of hidden keys checked soon: they report no change by themselves.
    void checkFacesSoon();

signals:
    //! An action was put on the key, or taken off it. A key's widgets are gone when this comes.
    void keyPlaced(int index);
    void keyRemoved(int index);
    void faceChanged(int index);
    void settingsChanged(int index);

private:
    void load();
    void save();
    QString fileName() const;
    QStringList actionIds() const;
    std::unique_ptr<ConsoleKey> makeKey(int index, QString const& actionId, QJsonObject const& settings);

    QString folder;
    IBuiltInPackageLibrary* library = nullptr;
    QMap<int, std::shared_ptr<ConsoleKey>> consoleKeys;
    //! Stored keys of other packages' actions, and what is no key: kept, not shown.
    QJsonArray foreign;
    bool loading = false;
    QTimer saving;
    QTimer checkingSoon;
    QTimer checkingLate;
};
