#include "actions/SlobsMessagePool.h"

#include <QAnyStringView>
#include <QJsonDocument>
#include <QUtf8StringView>

#include <algorithm>
#include <chrono>
#include <type_traits>
#include <utility>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;
using namespace std::chrono_literals;

namespace {

constexpr auto kEepTime = 1s;
constexpr std::size_t kEepCount = 32;

std::shared_ptr<SlobsMessage>& handled()
{
    static std::shared_ptr<SlobsMessage> message;
    return message;
}

template <typename Record>
QList<Record> decodeList(QJsonObject const& message)
{
    QJsonArray const array = message.value("list"_L1).toArray();
    QList<Record> records;
    records.reserve(array.size());
    for (auto const& element : array) {
        fromJson(element.toObject(), records.emplaceBack());
    }
    return records;
}

} // namespace

SlobsMessage::SlobsMessage(QByteArray const& text)
{
    auto const document = QJsonDocument::fromJson(text);
    if (document.isObject()) {
        content = document.object();
    }
}

template <typename Record>
QList<Record> const& SlobsMessage::list()
{
    if (!std::holds_alternative<QList<Record>>(records)) {
        QJsonObject const object = content.value_or(QJsonObject());
        if constexpr (std::is_same_v<Record, Scene>) {
            records = SlobsMessagePool::shared()->decodeScenes(object.value("list"_L1).toArray());
        } else {
            records = decodeList<Record>(object);
        }
    }
    return std::get<QList<Record>>(records);
}

SlobsMessagePool::SlobsMessagePool()
{
    expiry.setSingleShot(true);
    expiry.setInterval(kEepTime);
    expiry.callOnTimeout([this] { entries.clear(); });
}

std::shared_ptr<SlobsMessagePool> SlobsMessagePool::shared()
{
    static std::weak_ptr<SlobsMessagePool> pool;
    auto existing = pool.lock();
    if (!existing) {
        existing.reset(new SlobsMessagePool);
        existing->self = existing;
        pool = existing;
    }
    return existing;
}

bool SlobsMessagePool::Entry::isOf(QString const& text) const
{
    if (text.size() != length) {
        return false;
    }
    bool const isAscii = utf8.size() == length; // as most are, and compares in less time
    return isAscii ? text == QLatin1StringView(utf8)
                   : QAnyStringView(QUtf8StringView(utf8)) == QAnyStringView(text);
}

std::shared_ptr<SlobsMessage> SlobsMessagePool::take(QString const& text)
{
    // What everybody has taken was still needed while the last of them handled it, and is not any more.
    auto const agents = self.use_count();
    std::erase_if(entries, [agents](Entry const& entry) { return entry.taken >= agents; });

    auto entry = std::ranges::find_if(entries, [&text](Entry const& known) { return known.isOf(text); });
    if (entry == entries.end()) {
        if (entries.size() == kEepCount) {
            entries.erase(entries.begin());
        }
        QByteArray const utf8 = text.toUtf8();
        entries.push_back({utf8, text.size(), std::make_shared<SlobsMessage>(utf8)});
        entry = std::prev(entries.end());
        if (!expiry.isActive()) {
            expiry.start();
        }
    }
    ++entry->taken;
    return entry->message;
}

QList<Scene> SlobsMessagePool::decodeScenes(QJsonArray const& list)
{
    QList<Scene> decoded;
    decoded.reserve(list.size());
    for (qsizetype i = 0; i < list.size(); ++i) {
        QJsonObject const scene = list.at(i).toObject();
        if (i < scenes.size() && sceneList.at(i).toObject() == scene) {
            decoded.append(scenes.at(i));
        } else {
            fromJson(scene, decoded.emplaceBack());
        }
    }
    sceneList = list;
    scenes = decoded;
    return decoded;
}

template <typename Record>
QList<Record> SlobsMessagePool::list(QJsonObject const& message)
{
    // Objects that share their data compare equal without a look at it.
    if (auto const& current = handled(); current && current->object() == message) {
        return current->list<Record>();
    }
    return decodeList<Record>(message);
}

SlobsMessagePool::Handling::Handling(std::shared_ptr<SlobsMessage> message)
    : previous(std::exchange(handled(), std::move(message)))
{}

SlobsMessagePool::Handling::~Handling()
{
    handled() = std::move(previous);
}

template QList<Scene> SlobsMessagePool::list<Scene>(QJsonObject const&);
template QList<CollectionSchema> SlobsMessagePool::list<CollectionSchema>(QJsonObject const&);
template QList<AudioSource> SlobsMessagePool::list<AudioSource>(QJsonObject const&);
