#pragma once

#include <QString>

//! The looks of the kit's panels and dialogs, which stand together in resources/kit.qss.
namespace KitStyle {

//! The style sheet in \a section, with the values of its names.
QString sheet(QString const& section);

} // namespace KitStyle
