#include "devhost/host/Console.h"

#include "devhost/fakes/DevHostLog.h"
#include "plugin/IBuiltInPackageLibrary.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QScopedValueRollback>

#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Console::Console(QString configDir, QObject* parent) : QObject(parent), folder(std::move(configDir))
{
    // One write for all that a turn of the event loop brings.
    saving.setSingleShot(true);
    saving.setInterval(0);
    saving.callOnTimeout(this, &Console::save);

    // Soon, however often it is asked for, and once more when all keys have heard it for sure.
    for (auto [timer, time] : {std::pair(&checkingSoon, 5ms), {&checkingLate, 100ms}}) {
        timer->setSingleShot(true);
        timer->setInterval(time);
        timer->callOnTimeout(this, [this] {
            for (auto const& key : std::as_const(consoleKeys)) {
                key->checkFace();
            }
        });
    }
}

Console::~Console()
{
    setPackage(nullptr);
}

void Console::setPackage(IBuiltInPackageLibrary* package)
{
    if (saving.isActive()) {
        save();
    }
    {
        QScopedValueRollback const keepsFile(loading, true);
        for (int const index : indices()) {
            remove(index);
        }
    }
    library = package;
    if (library) {
        load();
    }
}

QStringList Console::actionIds() const
{
    QStringList ids;
    if (library) {
        for (auto const& entry : library->list().value("subnode"_L1).toArray()) {
            ids.append(entry[u"category"_s].toString());
        }
    }
    return ids;
}

QString Console::actionIdOf(QString const& action) const
{
    for (QString const& id : actionIds()) {
        if (id == action || id.section(u'.', -1) == action) {
            return id;
        }
    }
    return {};
}

QStringList Console::actionNames() const
{
    QStringList names = actionIds();
    for (QString& name : names) {
        name = name.section(u'.', -1);
    }
    return names;
}

std::unique_ptr<ConsoleKey> Console::makeKey(int index, QString const& actionId, QJsonObject const& settings)
{
    auto key = ConsoleKey::create(*library, actionId, index, settings);
    if (key) {
        connect(key.get(), &ConsoleKey::faceChanged, this, [this, index] { emit faceChanged(index); });
        connect(key.get(), &ConsoleKey::settingsChanged, this, [this, index] {
            saving.start();
            emit settingsChanged(index);
        });
    }
    return key;
}

bool Console::place(int index, QString const& actionId, QJsonObject const& settings)
{
    if (!library || index < 0 || index >= kMostKeys) {
        return false;
    }
    std::shared_ptr<ConsoleKey> key = makeKey(index, actionId, settings);
    if (!key) {
        return false;
    }
    remove(index);
    consoleKeys.insert(index, key);
    if (!loading) {
        saving.start();
    }
    emit keyPlaced(index);
    emit faceChanged(index);
    return true;
}

bool Console::remove(int index)
{
    if (!consoleKeys.contains(index)) {
        return false;
    }
    consoleKeys.value(index)->checkFace(); // its last change
    consoleKeys.remove(index);
    if (!loading) {
        saving.start();
    }
    emit keyRemoved(index);
    return true;
}

bool Console::move(int from, int to)
{
    ConsoleKey const* const source = key(from);
    if (!source || from == to || to < 0 || to >= kMostKeys) {
        return false;
    }
    ConsoleKey const* const target = key(to);
    QString const sourceAction = source->actionId();
    QJsonObject const sourceSettings = source->settings();
    if (target) {
        QString const targetAction = target->actionId();
        QJsonObject const targetSettings = target->settings();
        place(from, targetAction, targetSettings);
    } else {
        remove(from);
    }
    return place(to, sourceAction, sourceSettings);
}

int Console::firstFreeIndex() const
{
    int index = 0;
    while (consoleKeys.contains(index)) {
        ++index;
    }
    return index;
}

ConsoleKey* Console::key(int index) const
{
    return consoleKeys.value(index).get();
}

void Console::checkFacesSoon()
{
    if (consoleKeys.isEmpty()) {
        return;
    }
    if (!checkingSoon.isActive()) {
        checkingSoon.start();
    }
    checkingLate.start();
}

// ---- Keeping

QString Console::fileName() const
{
    return folder + u"/keys.json"_s;
}

void Console::load()
{
    foreign = {};
    QFile file(fileName());
    if (folder.isEmpty() || !file.exists()) {
        return;
    }
    QJsonParseError error{};
    bool const readable = file.open(QIODevice::ReadOnly);
    auto const document = readable ? QJsonDocument::fromJson(file.readAll(), &error) : QJsonDocument();
    file.close();
    QJsonValue const keys = document.object().value("keys"_L1);
    if (!keys.isArray()) {
        // What cannot be read is set aside, not overwritten.
        QString const aside = fileName() + u".broken"_s;
        QFile::remove(aside);
        QFile::rename(fileName(), aside);
        qCWarning(devHostLog) << "the stored keys cannot be read:"
                              << (!readable              ? file.errorString()
                                     : document.isNull() ? error.errorString()
                                                         : u"there is no list of them"_s)
                              << "- set aside as" << aside;
        return;
    }
    QScopedValueRollback const whileLoading(loading, true);
    for (QJsonValue const entry : keys.toArray()) {
        QJsonObject const stored = entry.toObject();
        int const index = stored.value("index"_L1).toInt(-1);
        if (consoleKeys.contains(index) ||
            !place(index, stored.value("action"_L1).toString(), stored.value("settings"_L1).toObject())) {
            foreign.append(entry);
        }
    }
}

void Console::save()
{
    saving.stop();
    if (folder.isEmpty()) {
        return;
    }
    QJsonArray keys = foreign;
    for (auto const& key : std::as_const(consoleKeys)) {
        keys.append(QJsonObject{
            {u"index"_s, key->index()}, {u"action"_s, key->actionId()}, {u"settings"_s, key->settings()}});
    }
    QSaveFile file(fileName());
    bool const isOpen = file.open(QIODevice::WriteOnly);
    // Before there is anything in it, and whatever the one before had.
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (!isOpen || file.write(QJsonDocument({{u"version"_s, 1}, {u"keys"_s, keys}}).toJson()) < 0 ||
        !file.commit()) {
        qCWarning(devHostLog) << "the keys cannot be stored:" << file.errorString();
    }
}
