#pragma once

#include <QString>

//! What is known of the link to Streamlabs Desktop: as the service publishes it, nothing at first.
struct SlobsLink
{
    bool authorized = false;
    QString token;
    int port = 0;

    //! Whether it is there and known.
    bool isUp() const { return authorized && port >= 1 && !token.isEmpty(); }
};
