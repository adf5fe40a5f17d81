#include "relay/ZoLumenProxy.h"

ZoLumenProxy& ZoLumenProxy::getInstance()
{
    static ZoLumenProxy proxy;
    return proxy;
}
