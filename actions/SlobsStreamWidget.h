#pragma once

#include "actions/SlobsOutputWidget.h"
#include "actions/SlobsStreamDisplayView.h"
#include "actions/SlobsStreamPropertyView.h"

//! Starts and stops the stream.
class SlobsStreamWidget : public SlobsOutputWidget
{
    Q_OBJECT

public:
    explicit SlobsStreamWidget(QObject* parent = nullptr)
        : SlobsOutputWidget(
              SlobsOutput::stream(), new SlobsStreamDisplayView, new SlobsStreamPropertyView, parent)
    {}
};
