#pragma once

#include <QJsonObject>
#include <QLibrary>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

class IBuiltInPackageLibrary;
class QTranslator;
class ZOPlugin;
class ZoInterfaceRcc;

//! The life of an action package as the console's host leads it: load the library, check `sdk`, make the
//! package object with `instance`, then `init`, `loadConfig`, `translate`, `mapping`; later action objects
//! and the service; at the end everything in reverse, until the library is out of memory again.
class PluginHost : public QObject
{
    Q_OBJECT

public:
    //! The version of the package interface that this host speaks.
    static constexpr int kSdkVersion = 4;

    struct Parameters
    {
        //! Path of the library, with or without the platform's prefix and suffix.
        QString file;
        //! TCP port of the relay on 127.0.0.1.
        quint16 relayPort = 0;
        //! Folder for package data, absolute.
        QString configDir;
        //! Language code such as "en_US".
        QString language;
    };

    explicit PluginHost(QObject* parent = nullptr);
    //! Unloads.
    ~PluginHost() override;

    //! False when the library cannot be used; `errorString` then says why, for people, and nothing is left
    //! loaded.
    bool load(Parameters const& parameters);
    //! Stops the service, deletes the package object and unloads the library. Action objects must be gone
    //! already. False when the system kept the library in memory.
    bool unload();
    bool isLoaded() const { return loadedPackage != nullptr; }
    QString errorString() const { return problem; }
    //! Absolute path of the loaded library.
    QString fileName() const { return library.fileName(); }

    //! Null while nothing is loaded. Owned here.
    IBuiltInPackageLibrary* package() const { return loadedPackage.get(); }
    //! What the package calls its actions, by label key.
    QMap<QString, QString> const& labels() const { return labelTexts; }

    //! Starts the package's service on the \a relay, which must outlive it, for the Streamlabs Desktop at \a
    //! port.
    void startService(ZoInterfaceRcc& relay, QString const& token, int port);
    void stopService();
    //! What the host's settings page does with its three buttons.
    void connectDesktop(QString const& token, int port);
    void disconnectDesktop();
    void reconnectDesktop(QString const& token, int port);

private:
    bool fail(QString const& reason);
    void sendTask(QString const& name, QJsonObject const& payload);

    QLibrary library;
    std::unique_ptr<IBuiltInPackageLibrary> loadedPackage;
    QMap<QString, QString> labelTexts;
    QString problem;
};
