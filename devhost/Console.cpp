#include "devhost/Console.h"

#include "devhost/DevHostLog.h"
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

Console::Console(QString configDir, QObject* parent) : QObject(parent), m_configDir(std::move(configDir))
{
    // One write for all that a turn of the event loop brings.
    m_saving.setSingleShot(true);
    m_saving.setInterval(0);
    m_saving.callOnTimeout(this, &Console::save);

    // Soon, however often it is asked for, and once more when all keys have heard it for sure.
    for (auto [timer, time] : {std::pair(&m_checkingSoon, 5ms), {&m_checkingLate, 100ms}}) {
        timer->setSingleShot(true);
        timer->setInterval(time);
        timer->callOnTimeout(this, [this] {
            for (auto const& key : std::as_const(m_keys)) {
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
    if (m_saving.isActive()) {
        save();
    }
    {
        QScopedValueRollback const keepsFile(m_loading, true);
        for (int const index : indices()) {
            remove(index);
        }
    }
    m_package = package;
    if (m_package) {
        load();
    }
}

QString Console::actionIdOf(QString const& action) const
{
    if (m_package) {
        for (auto const& entry : m_package->list().value("subnode"_L1).toArray()) {
            QString id = entry.toObject().value("category"_L1).toString();
            if (id == action || id.section(u'.', -1) == action) {
                return id;
            }
        }
    }
    return {};
}

std::unique_ptr<ConsoleKey> Console::makeKey(int index, QString const& actionId, QJsonObject const& settings)
{
    auto key = ConsoleKey::create(*m_package, actionId, index, settings);
    if (key) {
        connect(key.get(), &ConsoleKey::faceChanged, this, [this, index] { emit faceChanged(index); });
        connect(key.get(), &ConsoleKey::settingsChanged, this, [this, index] {
            m_saving.start();
            emit settingsChanged(index);
        });
    }
    return key;
}

bool Console::place(int index, QString const& actionId, QJsonObject const& settings)
{
    if (!m_package || index < 0 || index >= mostKeys) {
        return false;
    }
    std::shared_ptr<ConsoleKey> key = makeKey(index, actionId, settings);
    if (!key) {
        return false;
    }
    remove(index);
    m_keys.insert(index, key);
    if (!m_loading) {
        m_saving.start();
    }
    emit keyPlaced(index);
    emit faceChanged(index);
    return true;
}

bool Console::remove(int index)
{
    if (!m_keys.contains(index)) {
        return false;
    }
    m_keys.value(index)->checkFace(); // its last change
    m_keys.remove(index);
    if (!m_loading) {
        m_saving.start();
    }
    emit keyRemoved(index);
    return true;
}

bool Console::move(int from, int to)
{
    ConsoleKey const* const source = key(from);
    if (!source || from == to || to < 0 || to >= mostKeys) {
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
    while (m_keys.contains(index)) {
        ++index;
    }
    return index;
}

ConsoleKey* Console::key(int index) const
{
    return m_keys.value(index).get();
}

void Console::checkFacesSoon()
{
    if (m_keys.isEmpty()) {
        return;
    }
    if (!m_checkingSoon.isActive()) {
        m_checkingSoon.start();
    }
    m_checkingLate.start();
}

// ---- Keeping

QString Console::fileName() const
{
    return m_configDir + u"/keys.json"_s;
}

void Console::load()
{
    m_foreign = {};
    QFile file(fileName());
    if (m_configDir.isEmpty() || !file.exists()) {
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
    QScopedValueRollback const loading(m_loading, true);
    for (QJsonValue const entry : keys.toArray()) {
        QJsonObject const stored = entry.toObject();
        int const index = stored.value("index"_L1).toInt(-1);
        if (m_keys.contains(index) ||
            !place(index, stored.value("action"_L1).toString(), stored.value("settings"_L1).toObject())) {
            m_foreign.append(entry);
        }
    }
}

void Console::save()
{
    m_saving.stop();
    if (m_configDir.isEmpty()) {
        return;
    }
    QJsonArray keys = m_foreign;
    for (auto const& key : std::as_const(m_keys)) {
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
