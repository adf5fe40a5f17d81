#include "streamlabs/SceneListCache.h"

#include <QJsonObject>

#include <utility>

using namespace Qt::StringLiterals;
using namespace StreamlabsApiPrivate;

QJsonArray const& SceneListCache::json() const
{
    if (!isEncoded) {
        encoded = toJson(records);
        isEncoded = true;
    }
    return encoded;
}

void SceneListCache::replace(QList<Scene> scenes)
{
    records = std::move(scenes);
    encoded = {};
    isEncoded = records.isEmpty();
}

void SceneListCache::updateItem(Source const& item)
{
    if (item.sceneItemId.isEmpty()) {
        return; // no item at all, as every folder
    }
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (records.at(i).id != item.sceneId) {
            continue;
        }
        editNodes(i, [&item](Source const& node) -> std::optional<Source> {
            if (node.sceneItemId != item.sceneItemId) {
                return std::nullopt;
            }
            Source changed = node;
            changed.recordVisible = item.recordVisible;
            changed.streamVisible = item.streamVisible;
            changed.visible = item.visible;
            changed.locked = item.locked;
            changed.name = item.name;
            return changed;
        });
    }
}

void SceneListCache::rename(QString const& id, QString const& name)
{
    if (id.isEmpty()) {
        return; // no source at all, as in every folder
    }
    for (qsizetype i = 0; i < records.size(); ++i) {
        if (records.at(i).id == id) {
            renameScene(i, name);
        }
        editNodes(i, [&](Source const& node) -> std::optional<Source> {
            if (node.sourceId != id) {
                return std::nullopt;
            }
            Source changed = node;
            changed.name = name;
            return changed;
        });
    }
}

template <typename Edit>
void SceneListCache::editNodes(qsizetype sceneIndex, Edit edit)
{
    QJsonArray nodes; // of this scene; fetched when a first node changes
    for (qsizetype i = 0; i < records.at(sceneIndex).nodes.size(); ++i) {
        Source const& node = records.at(sceneIndex).nodes.at(i);
        std::optional<Source> changed = edit(node);
        if (!changed || *changed == node) {
            continue;
        }
        if (isEncoded) {
            if (nodes.isEmpty()) {
                nodes = encoded.at(sceneIndex).toObject().value("nodes"_L1).toArray();
            }
            nodes.replace(i, toJson(*changed));
        }
        records[sceneIndex].nodes[i] = std::move(*changed);
    }
    if (!nodes.isEmpty()) {
        QJsonObject scene = encoded.at(sceneIndex).toObject();
        scene.insert("nodes"_L1, nodes);
        encoded.replace(sceneIndex, scene);
    }
}

void SceneListCache::renameScene(qsizetype sceneIndex, QString const& name)
{
    records[sceneIndex].name = name;
    if (isEncoded) {
        QJsonObject scene = encoded.at(sceneIndex).toObject();
        scene.insert("name"_L1, name);
        encoded.replace(sceneIndex, scene);
    }
}
