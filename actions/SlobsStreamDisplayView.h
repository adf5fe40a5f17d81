#pragma once

#include "actions/SlobsOutputDisplayView.h"

//! On while the stream is "live" or "starting".
class SlobsStreamDisplayView : public SlobsOutputDisplayView
{
    Q_OBJECT

public:
    explicit SlobsStreamDisplayView(QWidget* parent = nullptr)
        : SlobsOutputDisplayView(SlobsOutput::stream(), parent)
    {}
};
