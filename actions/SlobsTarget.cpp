#include "actions/SlobsTarget.h"

QString SlobsTarget::unknownName()
{
    return QString::fromLatin1("UNKNOWN");
}

SlobsTarget SlobsTarget::fromJson(QJsonObject const& document, QString const& idKey, QString const& nameKey)
{
    return {document.value(idKey).toString(), document.value(nameKey).toString(unknownName())};
}

void SlobsTarget::writeTo(QJsonObject& document, QString const& idKey, QString const& nameKey) const
{
    document.insert(idKey, id);
    document.insert(nameKey, name);
}
