#pragma once

#include <QColor>

class QApplication;

//! The look of the window, dark like the console, in one place. The adopted faces and panels of actions bring
//! their own; only what they leave open comes from here.
namespace DarkTheme {

inline constexpr QColor window{40, 40, 40}; //!< also the ground of the actions' panels
inline constexpr QColor base{30, 30, 30};
inline constexpr QColor console{18, 18, 18};
inline constexpr QColor freeKey{24, 24, 24};
inline constexpr QColor outline{58, 58, 58};
inline constexpr QColor button{60, 60, 60};
inline constexpr QColor text{232, 232, 232};
inline constexpr QColor faintText{154, 154, 154};
inline constexpr QColor accent{255, 153, 0};
inline constexpr QColor chosen{138, 84, 8};
inline constexpr QColor onAir{140, 32, 24};
inline constexpr QColor lit{255, 64, 48};
inline constexpr QColor good{76, 200, 120};

//! Gives the whole program style and palette.
void apply(QApplication& app);

} // namespace DarkTheme
