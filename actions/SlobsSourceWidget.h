#pragma once

#include "actions/SlobsTargetWidget.h"
#include "streamlabs/StreamlabsApi.h"

#include <QList>

//! Shows or hides one scene item; the key is lit while the item is visible.
//! Settings: "scene_id", "scene_name", "scene_item_id", "scene_item_name".
class SlobsSourceWidget : public SlobsTargetWidget
{
    Q_OBJECT

public:
    explicit SlobsSourceWidget(QObject* parent = nullptr);

    void startWithDefault() override;
    void prepareWidgetSettings(QJsonObject& document) override;
    void onConnectToRcc() override;
    //! Asks for the opposite of what the last scene list says, and to show an item that the list does not
    //! have.
    int onAppTriggeredEvent(QJsonObject const& event) override;

protected:
    QJsonObject convertLegacyKeys(QJsonObject const& document) const override;
    void readSettings(QJsonObject const& payload) override;
    QString refreshTask() const override;
    void refreshList() override;

private:
    void rememberNames();

    SlobsTarget scene;
    SlobsTarget item;
    QList<StreamlabsApiPrivate::Scene> scenes;
};
