#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

class QWidget;

//! Base of every action object: what the host sees of one action placed on one key.
//!
//! Part of the contract with the host, which is compiled apart from the package. The order of the virtual
//! operations, of the signals and of the fields is binary interface: nothing is reordered, inserted or
//! removed; new operations go to the end together with a higher `sdk()`.
//!
//! Lifetime: the package's `makeWidget` creates the object without a parent; the host owns it and deletes it
//! when the key is cleared, always before it deletes the library object and unloads the library. The widgets
//! that `pluginWidget` and `propertyWidget` give out are usually adopted (given a parent) by the host; a
//! widget without a parent is deleted together with the action object.
//!
//! The host may delete the object from inside of its signals; the call that led to the signal returns as
//! ever. A panel that it has adopted it should delete later then (`deleteLater`), for what the user does in
//! the panel may be what led to the signal. One without a parent then goes at the next turn of the event
//! loop.
//!
//! Threads: the host's GUI thread only, for every call and every signal.
//!
//! Failures: nothing is thrown. Initialisation answers false, event operations answer -1 for "not handled".
//!
//! Signals: the package exports no meta-object symbols. A host connects by signature,
//! `connect(action, SIGNAL(eventSent(QJsonObject)), ...)`, or through its own compilation of this header,
//! which has the same signal indices.
class ZOPlugin : public QObject
{
    Q_OBJECT

public:
    //! The host's name for the placed key, chosen by the host and stored by `init`; empty before. It is the
    //! "target" of the events that the action sends.
    QString context;
    //! The action id under which the object was made, such as "com.zentrix.slobs.webapp.stream". Set by the
    //! package's factory before the host sees the object.
    QString actionId;

    explicit ZOPlugin(QObject* parent = nullptr) : QObject(parent) {}

signals:
    //! The action has an event object for the host, for example
    //! {"event": {"type": "mek.zo.plugin.event.set.settings", "SDKVersion": …, "AppVersion": …,
    //! "payload": {settings document}}, "target": context}.
    void eventSent(QJsonObject const& event);
    //! An event that the action hands on to the host unchanged.
    void eventPassThrough(QJsonObject const& event);
    //! A usage-statistics event called \a name with its parameters, for the host to record.
    void ga(QString const& name, QJsonObject const& params);

public:
    //! Initialises the action for the key \a context.
    //! \a settings: {"payload": {the document that the action last sent}}, {"preset": {…}}, or neither for
    //! defaults.
    virtual bool init(QString const& context, QJsonObject const& settings) = 0;
    //! Delivers one host event, {"event": {"type": name, "payload": …}, …}. The names that actions
    //! understand:
    //! - "mek.zo.plugin.event.key.down", "mek.zo.plugin.event.app.triggered", "mek.zo.plugin.event.key.up":
    //! the
    //!   key was pressed, shall do what it is for, was released. A press sends the three in this order.
    //! - "mek.zo.plugin.event.update.settings": send the settings document for storing, by `eventSent`.
    //!
    //! \a reply gets "success": true, or "error": 403 (no event in it) or 404 (unknown type).
    //! Returns 0 when the event was handled and -1 when it was not.
    virtual int eventReceived(QJsonObject const& event, QJsonObject& reply) = 0;
    //! The same; \a source is for the host's own use and is dropped.
    virtual int eventReceived(QJsonObject const& event, QJsonObject& reply, [[maybe_unused]] int source)
    {
        return eventReceived(event, reply);
    }
    //! The key face, 150 x 108 px. For the actions of this package never null until the host deletes it.
    virtual QWidget* pluginWidget() = 0;
    //! The settings panel for the host's property inspector. For the actions of this package never null until
    //! the host deletes it.
    virtual QWidget* propertyWidget() = 0;
    //! What the key shows in its present state: the title, and the path of the icon, which is a file or
    //! begins with ":/" in the package's resources. Empty for none.
    virtual QString actionTitle() const = 0;
    virtual QString actionIconFilePath() const = 0;

    //! The key was released, pressed, or asks for its function (in this order of slots). \a payload is the
    //! event.
    virtual int onKeyUpEvent([[maybe_unused]] QJsonObject const& payload) { return -1; }
    virtual int onKeyDownEvent([[maybe_unused]] QJsonObject const& payload) { return -1; }
    virtual int onAppTriggeredEvent([[maybe_unused]] QJsonObject const& payload) { return -1; }
    //! Sends \a payload, a settings document, to the host for storing.
    virtual int onSetSettingsEvent([[maybe_unused]] QJsonObject const& payload) { return -1; }
    //! Brings the two widgets in line with the settings document.
    virtual int onSyncUI() { return -1; }

    //! Initialises the action with default settings. An override stores \a keyContext first as well.
    virtual bool init(QString const& keyContext)
    {
        context = keyContext;
        return initWithDefault();
    }
    virtual bool initWithDefault() { return false; }
    //! \a payload: a settings document of any version that the host has stored.
    virtual bool initWithPayload([[maybe_unused]] QJsonObject const& payload) { return false; }
    virtual bool initWithPreset([[maybe_unused]] QJsonObject const& preset) { return false; }
};
