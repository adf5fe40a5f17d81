#pragma once

#include "devhost/fakes/RelayServer.h"
#include "relay/ZoLumenProxy.h"
#include "tests/LoggedTest.h"

#include <memory>

//! A test with a relay of its own, which the clients of this process find by themselves.
class RelayTest : public LoggedTest
{
protected:
    void init() override
    {
        LoggedTest::init();
        relay = std::make_unique<RelayServer>();
        QVERIFY(relay->listen());
        ZoLumenProxy::getInstance().port = relay->port();
    }
    void cleanup() override
    {
        relay.reset();
        LoggedTest::cleanup();
    }

    std::unique_ptr<RelayServer> relay;
};
