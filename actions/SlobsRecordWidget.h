#pragma once

#include "actions/SlobsOutputWidget.h"
#include "actions/SlobsRecordDisplayView.h"
#include "actions/SlobsRecordPropertyView.h"

//! Starts and stops the recording.
class SlobsRecordWidget : public SlobsOutputWidget
{
    Q_OBJECT

public:
    explicit SlobsRecordWidget(QObject* parent = nullptr)
        : SlobsOutputWidget(
              SlobsOutput::record(), new SlobsRecordDisplayView, new SlobsRecordPropertyView, parent)
    {}
};
