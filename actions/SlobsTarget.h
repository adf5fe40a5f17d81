#pragma once

#include <QJsonObject>
#include <QString>

//! What a key is set to: the id that counts, and the name as last seen, to be shown when the target is gone.
struct SlobsTarget
{
    //! Empty while nothing is chosen.
    QString id;
    QString name = unknownName();

    static QString unknownName();
    //! Reads the members \a idKey and \a nameKey of a settings document; a missing name stays unknown.
    static SlobsTarget fromJson(QJsonObject const& document, QString const& idKey, QString const& nameKey);
    void writeTo(QJsonObject& document, QString const& idKey, QString const& nameKey) const;

    bool operator==(SlobsTarget const&) const = default;
};
