#include "devhost/fakes/JsonMatch.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

bool jsonIncludes(QJsonValue const& value, QJsonValue const& expected)
{
    if (expected.isObject() && value.isObject()) {
        QJsonObject const members = expected.toObject();
        QJsonObject const object = value.toObject();
        for (auto member = members.begin(); member != members.end(); ++member) {
            if (!jsonIncludes(object.value(member.key()), member.value())) {
                return false;
            }
        }
        return true;
    }
    if (expected.isArray() && value.isArray()) {
        QJsonArray const array = value.toArray();
        auto at = array.begin();
        for (auto const& element : expected.toArray()) {
            at = std::find_if(at, array.end(),
                [&element](QJsonValue const& candidate) { return jsonIncludes(candidate, element); });
            if (at == array.end()) {
                return false;
            }
            ++at;
        }
        return true;
    }
    return value == expected;
}
