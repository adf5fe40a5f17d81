#pragma once

#include <QJsonValue>

//! Whether \a value includes \a expected: an object every member that is expected, an array all expected
//! elements in their order with others between them, anything else the same value.
bool jsonIncludes(QJsonValue const& value, QJsonValue const& expected);
