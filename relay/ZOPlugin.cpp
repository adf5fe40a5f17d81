#include "relay/ZOPlugin.h"

// The moc output of the header needs a home; the class itself is inline so that a host can use the header
// alone.
#include "moc_ZOPlugin.cpp"
