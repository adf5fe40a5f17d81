#include "actions/SlobsMessagePool.h"

#include <QJsonDocument>

#include <algorithm>
#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto kKeepTime = 1s;
constexpr std::size_t kKeepCount = 32;

} // namespace

SlobsMessagePool::SlobsMessagePool()
{
    expiry.setSingleShot(true);
    expiry.setInterval(kKeepTime);
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

std::optional<QJsonObject> SlobsMessagePool::take(QString const& text)
{
    auto entry = std::ranges::find(entries, text, &Entry::text);
    if (entry == entries.end()) {
        if (entries.size() == kKeepCount) {
            entries.erase(entries.begin());
        }
        auto const document = QJsonDocument::fromJson(text.toUtf8());
        entry = entries.insert(
            entries.end(), {text, document.isObject() ? std::optional(document.object()) : std::nullopt});
        if (!expiry.isActive()) {
            expiry.start();
        }
    }
    auto object = entry->object;
    if (++entry->taken >= self.use_count()) {
        entries.erase(entry);
    }
    return object;
}
