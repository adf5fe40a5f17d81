#pragma once

#include "actions/SlobsLink.h"
#include "relay/ZOPlugin.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <memory>

class BaseSlobsDisplayView;
class BaseSlobsPropertyView;
class SlobsAgent;
class ZoDisplayViewAttribute;

//! What all five actions have in common: one object per placed key, with its settings document, its key face,
//! its settings panel, and its agent to the service.
//!
//! The settings document (see SlobsSettings) is stored by the host, which hands it back to `init` as
//! {"payload": document}. Documents of earlier versions are converted and sent back to the host at once. Keys
//! that nobody here knows are kept and written back.
//!
//! From construction on the agent looks for the host's relay; once that acknowledges it, the action
//! subscribes and asks for what it shows. Until then, and when the relay goes away, the key counts as not
//! linked.
//!
//! The two views are given out and usually adopted by the host. Who has adopted a view deletes it, before or
//! after the action; a view that nobody adopted goes with the action.
class BaseSlobsWidget : public ZOPlugin
{
    Q_OBJECT

public:
    //! The views start without a parent.
    BaseSlobsWidget(BaseSlobsDisplayView* displayView, BaseSlobsPropertyView* propertyView, QObject* parent);
    ~BaseSlobsWidget() override;

    using ZOPlugin::eventReceived;

    bool init(QString const& keyContext, QJsonObject const& data) override;
    int eventReceived(QJsonObject const& message, QJsonObject& result) override;
    QWidget* pluginWidget() override;
    QWidget* propertyWidget() override;
    //! Title and image of the state that the key shows.
    QString actionTitle() const override;
    QString actionIconFilePath() const override;
    int onKeyUpEvent(QJsonObject const& event) override;
    int onKeyDownEvent(QJsonObject const& event) override;
    int onSetSettingsEvent(QJsonObject const& document) override;
    int onSyncUI() override;
    bool init(QString const& keyContext) override;
    bool initWithDefault() override;
    bool initWithPayload(QJsonObject const& document) override;
    bool initWithPreset(QJsonObject const& preset) override;

    //! \name What an action supplies
    //!@{
    //! Titles and images per state, and the defaults of the action's own settings.
    virtual void startWithDefault() = 0;
    //! Reads the action's own settings from a document of version 2 and passes it to the views.
    virtual void startWithPayload(QJsonObject const& document);
    //! The same for a preset.
    virtual void startWithPreset(QJsonObject const& preset);
    //! Writes the action's own settings into \a document.
    virtual void prepareWidgetSettings(QJsonObject& document);
    //! Takes the action's own settings from a document of an earlier version; false when \a version is none
    //! of those.
    virtual bool migrateLegacyPayload(QJsonObject const& document, int version);
    //! The base stores what the service says of the link.
    virtual void onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort) = 0;
    //! A message from the panel: {"task": …, "payload": …} or {"event": …}.
    virtual void onPropertyMessageReceived(QJsonObject const& message);
    //! The relay knows the action: it asks for the state of the link; overrides add their handlers and
    //! questions.
    virtual void onConnectToRcc();
    //!@}

signals:
    void sendToPropertyView(QJsonObject const& message);
    void sendToDisplayView(QJsonObject const& message);

protected:
    SlobsAgent& agent() const;
    //! A document of an earlier version, with the keys of the action as they are called today.
    virtual QJsonObject convertLegacyKeys(QJsonObject const& document) const;
    void setStates(QStringList const& titles, QStringList const& icons);
    //! Passes \a message to both views.
    void sendToViews(QJsonObject const& message);
    //! Passes a settings document to both views, {"task": "getWidgetSettings", "payload": \a document}.
    void sendSettingsToViews(QJsonObject const& document);
    //! Sends the whole document to the host.
    void saveWidgetSettings();

    SlobsLink link;

private:
    void changeTitle(int index, QString const& text, bool apply);
    void changeIcon(int index, QString const& path, bool apply);
    void changeFontAttribute(ZoDisplayViewAttribute const& attribute);

    class Impl;
    std::unique_ptr<Impl> d;
};
