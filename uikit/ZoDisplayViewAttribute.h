#pragma once

#include <QColor>
#include <QJsonObject>
#include <QMetaType>
#include <QString>

//! The keys of a text look in an action's settings.
namespace ZoDisplayViewJsonKey {

inline QString const family = QString::fromLatin1("family");
inline QString const size = QString::fromLatin1("size");
inline QString const color = QString::fromLatin1("color");
inline QString const horizontalAlignment = QString::fromLatin1("horAlignment");
inline QString const bold = QString::fromLatin1("bold");
inline QString const italic = QString::fromLatin1("italic");
inline QString const underLine = QString::fromLatin1("underLine");

} // namespace ZoDisplayViewJsonKey

//! The look of a key's title. A plain value; the meta-object system knows it by the name of the class.
class ZoDisplayViewAttribute
{
public:
    //! Where an action's settings keep the look.
    static inline QString const pluginPayloadKey = QString::fromLatin1("displayView");

    //! Empty: the label keeps the family that it has.
    QString family;
    QColor color = Qt::white;
    //! Pixels in the settings preview; the key face draws the title twice as large.
    qint32 size = 13;
    //! Carried and compared for the host's other packages; neither stored nor shown.
    qint32 reserved = 64;
    //! Qt::Alignment flags, with or without a vertical one.
    qint32 horAlignment = Qt::AlignHCenter | Qt::AlignVCenter;
    bool italic = false;
    bool bold = false;
    bool underLine = false;

    //! Not inline: whatever makes a look also links the entry in the meta-type system and its removal.
    ZoDisplayViewAttribute();

    //! {"family": string, "size": integer, "color": "#rrggbb", "horAlignment": integer,
    //! "bold": bool, "italic": bool, "underLine": bool}. The colour's alpha is dropped.
    static QJsonObject toJson(ZoDisplayViewAttribute const& attribute);

    //! Reads what `toJson` writes. A missing key leaves the default; a size that is no integer counts as 0, a
    //! flag that is no boolean as false, and a colour that is none leaves white.
    static ZoDisplayViewAttribute fromJson(QJsonObject const& json);

    bool operator==(ZoDisplayViewAttribute const& other) const = default;
};

Q_DECLARE_METATYPE(ZoDisplayViewAttribute)
