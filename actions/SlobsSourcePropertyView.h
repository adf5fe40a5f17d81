#pragma once

#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsTarget.h"
#include "streamlabs/StreamlabsApi.h"

#include <memory>

namespace Ui {
class SlobsSourcePropertyView;
}

//! The settings panel of a scene item: which scene, and which of its items. Folders are not offered.
class SlobsSourcePropertyView : public BaseSlobsPropertyView
{
    Q_OBJECT

public:
    explicit SlobsSourcePropertyView(QWidget* parent = nullptr);
    ~SlobsSourcePropertyView() override;

public slots:
    void onWidgetMessageReceived(QJsonObject const& message) override;

protected:
    void retranslateUi() override;

private:
    void refreshLists();
    //! False when the chosen item is gone.
    Selection refreshSceneItemList();
    void onSceneChosen();
    void onSceneItemChosen();

    std::unique_ptr<Ui::SlobsSourcePropertyView> ui;
    QList<StreamlabsApiPrivate::Scene> scenes;
    SlobsTarget scene;
    SlobsTarget item;
};
