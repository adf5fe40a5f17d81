#pragma once

#include <QPixmap>

class Console;

//! The whole console in one picture, five keys in a row, 150 x 108 px each.
namespace ConsoleSheet {

QPixmap paint(Console& console);

} // namespace ConsoleSheet
