#include "devhost/DevHostLog.h"

Q_LOGGING_CATEGORY(devHostLog, "devhost")
