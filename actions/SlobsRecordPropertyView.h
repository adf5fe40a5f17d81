#pragma once

#include "actions/SlobsOutputPropertyView.h"

class SlobsRecordPropertyView : public SlobsOutputPropertyView
{
    Q_OBJECT

public:
    using SlobsOutputPropertyView::SlobsOutputPropertyView;
};
