#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

//! The object that \a text holds. Tests write JSON as it stands on the wire.
inline QJsonObject json(QByteArray const& text)
{
    QJsonParseError error;
    auto const document = QJsonDocument::fromJson(text, &error);
    Q_ASSERT_X(document.isObject(), "json", qPrintable(error.errorString()));
    return document.object();
}

inline QString compact(QJsonObject const& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}
