#include "devhost/host/PackageActions.h"

#include "devhost/host/PluginHost.h"
#include "plugin/IBuiltInPackageLibrary.h"

#include <QJsonArray>
#include <QPixmap>

using namespace Qt::StringLiterals;

namespace {

// An icon that only knows its path would ask the library's resources for pixels much later.
QIcon copyOf(QString const& path)
{
    QIcon const original(path);
    QIcon copy;
    for (QSize const size : {QSize(24, 24), QSize(32, 32)}) {
        for (qreal const ratio : {1.0, 2.0, 3.0}) {
            if (QPixmap const pixmap = original.pixmap(size, ratio); !pixmap.isNull()) {
                copy.addPixmap(pixmap);
                copy.addPixmap(pixmap, QIcon::Selected); // not tinted
            }
        }
    }
    return copy;
}

QString labelOf(QMap<QString, QString> const& labels, QString const& key)
{
    return labels.value(key, key);
}

} // namespace

QList<PackageAction> PackageActions::read(PluginHost const& plugin)
{
    QList<PackageAction> actions;
    for (auto const& entry : plugin.package()->list().value("subnode"_L1).toArray()) {
        QJsonObject const action = entry.toObject();
        actions.append({action.value("category"_L1).toString(),
            labelOf(plugin.labels(), action.value("title"_L1).toString()),
            copyOf(action.value("menu_icon"_L1).toString())});
    }
    return actions;
}

QString PackageActions::packageLabel(PluginHost const& plugin)
{
    auto& package = *plugin.package();
    return labelOf(plugin.labels(), package.list().value("title"_L1).toString()) + u' ' +
           package.versionName();
}
