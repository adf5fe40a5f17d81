#pragma once

#include "actions/BaseSlobsPropertyView.h"

#include <memory>

namespace Ui {
class SlobsOutputPropertyView;
}

//! The settings panel of an output: the frame and the login pane.
class SlobsOutputPropertyView : public BaseSlobsPropertyView
{
    Q_OBJECT

public:
    explicit SlobsOutputPropertyView(QWidget* parent = nullptr);
    ~SlobsOutputPropertyView() override;

protected:
    void retranslateUi() override;

private:
    std::unique_ptr<Ui::SlobsOutputPropertyView> ui;
};
