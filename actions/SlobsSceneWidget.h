#pragma once

#include "actions/SlobsTargetWidget.h"

//! Switches Streamlabs Desktop to one scene; the key is lit while that scene is the active one.
//! Settings: "scene_id", "scene_name".
class SlobsSceneWidget : public SlobsTargetWidget
{
    Q_OBJECT

public:
    explicit SlobsSceneWidget(QObject* parent = nullptr);

    void startWithDefault() override;
    void prepareWidgetSettings(QJsonObject& document) override;
    void onConnectToRcc() override;
    int onAppTriggeredEvent(QJsonObject const& event) override;

protected:
    void readSettings(QJsonObject const& payload) override;
    QString refreshTask() const override;
    void refreshList() override;

private:
    SlobsTarget scene;
};
