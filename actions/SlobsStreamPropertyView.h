#pragma once

#include "actions/SlobsOutputPropertyView.h"

class SlobsStreamPropertyView : public SlobsOutputPropertyView
{
    Q_OBJECT

public:
    using SlobsOutputPropertyView::SlobsOutputPropertyView;
};
