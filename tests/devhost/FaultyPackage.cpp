// A package in which much is amiss, for `lumen-devhost --check`.

#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/ZOPlugin.h"

#include <QJsonArray>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

class FaultyAction : public ZOPlugin
{
public:
    bool init(QString const&, QJsonObject const&) override { return true; }
    int eventReceived(QJsonObject const&, QJsonObject& reply) override
    {
        reply = {{u"success"_s, true}};
        emit eventSent({{u"event"_s, QJsonObject{{u"type"_s, u"mek.zo.plugin.event.set.settings"_s},
                                         {u"payload"_s, QJsonObject{{u"titlelist"_s, QJsonArray{u"On"_s}},
                                                            {u"iconlist"_s, QJsonArray{u":/nowhere.png"_s,
                                                                                u":/qt-project.org"_s}}}}}}});
        return 0;
    }
    QWidget* pluginWidget() override { return new QWidget; }
    QWidget* propertyWidget() override { return nullptr; }
    QString actionTitle() const override { return {}; }
    QString actionIconFilePath() const override { return {}; }

private:
    //! Kept for ever.
    QByteArray* lost = new QByteArray(8000, 'x');
};

class FaultyPackage : public IBuiltInPackageLibrary
{
public:
    FaultyPackage() : IBuiltInPackageLibrary(u"Faulty"_s, nullptr) {}
    bool loadConfig() override { return true; }
    QTranslator* translate(QString const&) override { return &translator; }
    QMap<QString, QString> mapping() override { return {}; }
    QJsonObject list() override
    {
        QJsonObject const action{{u"category"_s, u"faulty.one"_s}, {u"title"_s, u"LAB_ONE"_s}};
        return {{u"subnode"_s, QJsonArray{action, action, QJsonObject{{u"category"_s, u"faulty.none"_s}}}}};
    }
    ZOPlugin* makeWidget(QString const& actionId, int) override
    {
        return actionId == "faulty.one"_L1 ? new FaultyAction : nullptr;
    }
};

} // namespace

extern "C" Q_DECL_EXPORT int sdk()
{
    return 4;
}

extern "C" Q_DECL_EXPORT IBuiltInPackageLibrary* instance()
{
    return new FaultyPackage;
}
