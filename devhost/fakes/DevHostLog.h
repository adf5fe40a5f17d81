#pragma once

#include <QLoggingCategory>

//! What the development host itself has to say, apart from the lines of the library ("default").
Q_DECLARE_LOGGING_CATEGORY(devHostLog)
