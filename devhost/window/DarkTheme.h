#pragma once

#include <QColor>

class QApplication;

//! The look of the window, dark like the console, in one place. The adopted faces and panels of actions bring
//! their own; only what they leave open comes from here.
namespace DarkTheme {

inline constexpr QColor kWindow{40, 40, 40}; //!< also the ground of the actions' panels
inline constexpr QColor kBase{30, 30, 30};
inline constexpr QColor kConsole{18, 18, 18};
inline constexpr QColor kFreeKey{24, 24, 24};
inline constexpr QColor kOutline{58, 58, 58};
inline constexpr QColor kButton{60, 60, 60};
inline constexpr QColor kText{232, 232, 232};
inline constexpr QColor kFaintText{154, 154, 154};
inline constexpr QColor kAccent{255, 153, 0};
inline constexpr QColor kChosen{138, 84, 8};
inline constexpr QColor kOnAir{140, 32, 24};
inline constexpr QColor kLit{255, 64, 48};
inline constexpr QColor kGood{76, 200, 120};

//! Gives the whole program style and palette. Where the desktop's own palette is one of high contrast (text
//! on ground 20 : 1 or more as WCAG 2 counts it, which ordinary light and dark ones do not reach), that
//! stays.
void apply(QApplication& app);

//! Gives the program the palette of a desktop of high contrast, before `apply`.
void setHighContrast(QColor const& text, QColor const& ground);

//! \a color for a text on the window's ground, or the desktop's own where its palette stays: what a colour
//! tells, words tell as well.
QColor text(QColor const& color);

} // namespace DarkTheme
