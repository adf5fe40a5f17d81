#pragma once

#include "actions/SlobsOutputDisplayView.h"

//! On while the status is "recording", and not while it starts.
class SlobsRecordDisplayView : public SlobsOutputDisplayView
{
    Q_OBJECT

public:
    explicit SlobsRecordDisplayView(QWidget* parent = nullptr)
        : SlobsOutputDisplayView(SlobsOutput::record(), parent)
    {}
};
