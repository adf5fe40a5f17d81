#pragma once

#include <QObject>

//! Whether the user may change the icon of an action.
class BaseIconProperty
{
    Q_GADGET

public:
    //! The host stores the numbers.
    enum Type : int {
        Changeable = 0,
        //! One icon for good: no page buttons, no text on it, no way to pick a file.
        Fixed = 1,
    };
    Q_ENUM(Type)
};
