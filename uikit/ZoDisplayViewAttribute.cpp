#include "uikit/ZoDisplayViewAttribute.h"

namespace {

// By its name the type is found by hosts that invoke operations through the meta-object. The entry points
// into this library, so it must not outlive it.
class Registration
{
public:
    Registration() { qRegisterMetaType<ZoDisplayViewAttribute>(); }
    ~Registration() { QMetaType::unregisterMetaType(QMetaType::fromType<ZoDisplayViewAttribute>()); }
    Q_DISABLE_COPY_MOVE(Registration)
};

Registration const registration;

} // namespace

ZoDisplayViewAttribute::ZoDisplayViewAttribute() = default;

QJsonObject ZoDisplayViewAttribute::toJson(ZoDisplayViewAttribute const& attribute)
{
    return {
        {ZoDisplayViewJsonKey::family, attribute.family},
        {ZoDisplayViewJsonKey::size, attribute.size},
        {ZoDisplayViewJsonKey::color, attribute.color.name()},
        {ZoDisplayViewJsonKey::horizontalAlignment, attribute.horAlignment},
        {ZoDisplayViewJsonKey::bold, attribute.bold},
        {ZoDisplayViewJsonKey::italic, attribute.italic},
        {ZoDisplayViewJsonKey::underLine, attribute.underLine},
    };
}

ZoDisplayViewAttribute ZoDisplayViewAttribute::fromJson(QJsonObject const& json)
{
    ZoDisplayViewAttribute attribute;
    if (json.contains(ZoDisplayViewJsonKey::family)) {
        attribute.family = json.value(ZoDisplayViewJsonKey::family).toString();
    }
    if (json.contains(ZoDisplayViewJsonKey::size)) {
        attribute.size = json.value(ZoDisplayViewJsonKey::size).toInt();
    }
    // A title in an invalid colour would be black on the dark face: invisible.
    QColor const color = QColor::fromString(json.value(ZoDisplayViewJsonKey::color).toString());
    if (color.isValid()) {
        attribute.color = color;
    }
    if (json.contains(ZoDisplayViewJsonKey::horizontalAlignment)) {
        attribute.horAlignment = json.value(ZoDisplayViewJsonKey::horizontalAlignment).toInt();
    }
    // Absent reads as false, which is the default of all three.
    attribute.bold = json.value(ZoDisplayViewJsonKey::bold).toBool();
    attribute.italic = json.value(ZoDisplayViewJsonKey::italic).toBool();
    attribute.underLine = json.value(ZoDisplayViewJsonKey::underLine).toBool();
    return attribute;
}
