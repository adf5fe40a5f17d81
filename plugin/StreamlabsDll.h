#pragma once

#include "plugin/IBuiltInPackageLibrary.h"

#include <memory>

//! The package of actions for Streamlabs Desktop. Owns the one service that holds the link to the
//! application.
class StreamlabsDll : public IBuiltInPackageLibrary
{
    Q_OBJECT

public:
    explicit StreamlabsDll(QObject* parent = nullptr);
    //! Deletes a running service without closing its link first.
    ~StreamlabsDll() override;

    QMap<QString, QString> mapping() override;
    ZOPlugin* makeWidget(QString const& actionId, int index) override;
    void startService(ZoInterfaceRcc* rcc, QJsonObject const& params) override;
    void stopService() override;
    void onTask(QJsonObject const& task, QJsonObject& reply) override;

private:
    class Impl;
    std::unique_ptr<Impl> d;
};
