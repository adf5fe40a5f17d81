#include "devhost/fakes/DevHostLog.h"

Q_LOGGING_CATEGORY(devHostLog, "devhost")
