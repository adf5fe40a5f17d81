#pragma once

#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsTarget.h"

#include <memory>

namespace Ui {
class SlobsScenePropertyView;
}

//! The settings panel of a scene: which one.
class SlobsScenePropertyView : public BaseSlobsPropertyView
{
    Q_OBJECT

public:
    explicit SlobsScenePropertyView(QWidget* parent = nullptr);
    ~SlobsScenePropertyView() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

protected:
    void retranslateUi() override;

private:
    void refreshSceneList();
    void onSceneChosen();

    std::unique_ptr<Ui::SlobsScenePropertyView> ui;
    QList<Choice> scenes;
    SlobsTarget scene;
};
