#pragma once

#include <QJsonObject>
#include <QMap>
#include <QObject>
#include <QString>
#include <QTranslator>

class ZOPlugin;
class ZoInterfaceRcc;

//! An action package as the host sees it: the object that a package's exported function `instance` makes.
//!
//! Part of the contract with the host, which is compiled apart from the package. The order of the virtual
//! operations and of the fields is binary interface: nothing is reordered, inserted or removed.
//!
//! A package library exports two C functions:
//! - `int sdk()`: the version of this interface, 4. A host refuses another version before it calls more.
//! - `IBuiltInPackageLibrary* instance()`: a new object on every call, owned by the caller, to be deleted
//! with
//!   `delete` (the package and the host use the same C++ runtime and the same Qt).
//!
//! Call order: `instance`, `init`, `loadConfig`, `translate`, `mapping`; then `makeWidget` once per placed
//! key, and `startService`, `onTask`, `stopService` as the user connects and disconnects; `delete`; unload.
//! Before the library is unloaded the host has deleted every action object first, and the library object
//! last. What the operations return (strings, maps, JSON) are values that stay good after the unloading; the
//! translator is not.
//!
//! Threads: the host's GUI thread only; its event loop drives everything.
//!
//! Failures: nothing is thrown. False, null, 0 or an empty value, and a line in the log (category "default").
class IBuiltInPackageLibrary : public QObject
{
    Q_OBJECT

public:
    //! \a packageName is the first part of the package's resource paths, ":/<packageName>/…".
    IBuiltInPackageLibrary(QString packageName, QObject* parent);
    ~IBuiltInPackageLibrary() override;

    //! Reads ":/<packageName>/CategoryConfig.json". False, and `list()` as it was, when there is no such
    //! resource; true otherwise, with an empty `list()` when the text is not a JSON object.
    virtual bool loadConfig();
    //! The package's version number: "library"."versionCode" of the configuration, or its top-level
    //! "versionCode" where "library" is not an object. 0 when missing.
    virtual int versionCode();
    //! The package's version for people: "library"."versionName" (empty when missing), or the top-level
    //! "versionName" where "library" is not an object ("x.x.x" when missing).
    virtual QString versionName();
    //! Loads ":/<packageName>/language_<language>.qm", \a language being a code such as "en_US". Returns the
    //! package's translator for the host to install, or null. The translator belongs to this object and
    //! removes itself from the application when it is destroyed; another call loads another language into the
    //! same one.
    virtual QTranslator* translate(QString const& language);
    //! The labels of the package's actions: label key, such as "LAB_SIDEBAR_STLOBS_SCENE", to its text in the
    //! language last installed (the key itself where there is none).
    virtual QMap<QString, QString> mapping() = 0;
    //! Makes the action object for the action id \a actionId, such as "com.zentrix.slobs.webapp.scene". The
    //! caller owns it and calls one of its `init` operations next. Null for an unknown id. \a index is for
    //! the log only.
    virtual ZOPlugin* makeWidget(QString const& actionId, int index) = 0;
    //! Host parameters: {"port": TCP port of the host's relay on 127.0.0.1, "configDir": absolute path of the
    //! host's folder for package data, "cloudType": integer, ignored by this package}. Missing: 0, "", 0.
    //! Called once, before any action object or service is made. Returns `postInit()`.
    virtual bool init(QJsonObject const& params);
    //! Starts the package's background service, stopping a running one first. \a rcc: the host's relay, see
    //! ZoInterfaceRcc for how long it must live. \a params: {"token": string, "port": number}, the API token
    //! and the port of the application's remote-control interface. Without them the service waits for
    //! `onTask`. Nothing is answered: whether the link stands is published on
    //! "remote.subject.streamlabs.response" as
    //! {"task": "onStreamlabsAuthResult", "authorized": bool, "token", "port"}. An application that is not
    //! there is tried again and again; a refused token is a line in the log.
    virtual void startService(ZoInterfaceRcc* rcc, QJsonObject const& params);
    //! Stops and deletes the service; nothing when none runs.
    virtual void stopService();
    //! The package's configuration, with the actions on offer under "subnode":
    //! {"category", "icon", "title", "library": {…}, "dependency": {…}, "subnode": [{"category": action id,
    //! "title": label key, "subtitle", "menu_icon": resource path, "type", "supportMultiAction"}, …]}.
    virtual QJsonObject list();
    //! A task for the running service: {"task": "connect" | "disconnect" | "reconnect",
    //! "payload": {"token", "port"} (not for "disconnect")}. \a reply is left as it is.
    virtual void onTask(QJsonObject const& task, QJsonObject& reply);
    //! Hook for a package's own initialisation, the last step of `init`. True: go on.
    virtual bool postInit();

protected:
    QString packageName;
    QJsonObject config;
    QTranslator translator;
};
