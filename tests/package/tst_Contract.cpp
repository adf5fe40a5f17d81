// The contract with the host: the headers, the order of slots and fields, and what the base classes do.

#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoInterfaceRcc.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZOPlugin.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QTest>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <tuple>

using namespace Qt::StringLiterals;

namespace {

class BarePlugin : public ZOPlugin
{
public:
    using ZOPlugin::eventReceived;
    using ZOPlugin::init;

    bool init(QString const&, QJsonObject const&) override { return true; }
    int eventReceived(QJsonObject const&, QJsonObject&) override { return 7; }
    QWidget* pluginWidget() override { return nullptr; }
    QWidget* propertyWidget() override { return nullptr; }
    QString actionTitle() const override { return {}; }
    QString actionIconFilePath() const override { return {}; }
};

class BarePackage : public IBuiltInPackageLibrary
{
public:
    explicit BarePackage(QString const& name = u"Bare"_s) : IBuiltInPackageLibrary(name, nullptr) {}

    QMap<QString, QString> mapping() override { return {}; }
    ZOPlugin* makeWidget(QString const&, int) override { return nullptr; }

    using IBuiltInPackageLibrary::config;
    using IBuiltInPackageLibrary::packageName;
    using IBuiltInPackageLibrary::translator;
};

// Slot of a virtual function in the Itanium C++ ABI, which GCC and Clang follow: its pointer holds the slot's
// offset.
template <typename Function>
int slotOf(Function function)
{
    std::ptrdiff_t offset = 0;
    static_assert(sizeof(function) >= sizeof(offset));
    std::memcpy(&offset, &function, sizeof(offset));
#if defined(__aarch64__) || defined(__arm__)
    return static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void*)));
#else
    return static_cast<int>((offset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
#endif
}

void verifyFollowing(int slot, auto... functions)
{
    for (int const next : {slotOf(functions)...}) {
        QCOMPARE(next, ++slot);
    }
}

struct ObjectProbe : QObject
{
    static int lastSlot() { return slotOf(&ObjectProbe::disconnectNotify); }
};

bool standInOrder(std::initializer_list<void const*> fields)
{
    return std::is_sorted(fields.begin(), fields.end());
}

} // namespace

class tst_Contract : public QObject
{
    Q_OBJECT

private slots:
    void slotsFieldsAndSignalsStandInOrder()
    {
#if !defined(_MSC_VER) // which keeps slot numbers elsewhere
        using P = ZOPlugin;
        verifyFollowing(ObjectProbe::lastSlot(), qOverload<QString const&, QJsonObject const&>(&P::init),
            qOverload<QJsonObject const&, QJsonObject&>(&P::eventReceived),
            qOverload<QJsonObject const&, QJsonObject&, int>(&P::eventReceived), &P::pluginWidget,
            &P::propertyWidget, &P::actionTitle, &P::actionIconFilePath, &P::onKeyUpEvent, &P::onKeyDownEvent,
            &P::onAppTriggeredEvent, &P::onSetSettingsEvent, &P::onSyncUI,
            qOverload<QString const&>(&P::init), &P::initWithDefault, &P::initWithPayload,
            &P::initWithPreset);
        using L = IBuiltInPackageLibrary;
        verifyFollowing(ObjectProbe::lastSlot(), &L::loadConfig, &L::versionCode, &L::versionName,
            &L::translate, &L::mapping, &L::makeWidget, &L::init, &L::startService, &L::stopService, &L::list,
            &L::onTask, &L::postInit);
        using R = ZoInterfaceRcc;
        verifyFollowing(-1, &R::addCommandHandler, &R::removeCommandHandler, &R::publish, &R::dispatchEvent);
#endif

        BarePlugin const plugin;
        QVERIFY(standInOrder({&plugin.context, &plugin.actionId}));
        BarePackage const package;
        QVERIFY(standInOrder({&package.packageName, &package.config, &package.translator}));
        auto const& proxy = ZoLumenProxy::getInstance();
        QVERIFY(standInOrder({&proxy.port, &proxy.configDir}));

        int index = ZOPlugin::staticMetaObject.methodOffset();
        for (auto const* signature :
            {"eventSent(QJsonObject)", "eventPassThrough(QJsonObject)", "ga(QString,QJsonObject)"}) {
            QCOMPARE(ZOPlugin::staticMetaObject.method(index++).methodSignature(), signature);
        }
    }

    void bareActionHandlesNothing()
    {
        BarePlugin plugin;
        QVERIFY(!plugin.init(u"key 1"_s));
        QCOMPARE(plugin.context, u"key 1"_s);
        QVERIFY(!plugin.initWithDefault() && !plugin.initWithPayload({}) && !plugin.initWithPreset({}));
        for (int const answer : {plugin.onKeyUpEvent({}), plugin.onKeyDownEvent({}),
                 plugin.onAppTriggeredEvent({}), plugin.onSetSettingsEvent({}), plugin.onSyncUI()}) {
            QCOMPARE(answer, -1);
        }
        QJsonObject reply;
        QCOMPARE(plugin.eventReceived({}, reply, 3), 7);
    }

    void eventNames()
    {
        using namespace MekZoPluginEventType;
        QStringList const events{kSetSettingsEvent, kGetSettingsEvent, kKeyUpEvent, kKeyDownEvent,
            kAppTriggeredEvent, kDidReceiveSettingsEvent, kDidUpdateSettingsEvent, kUpdateSettingsEvent,
            kDeviceDidConnectEvent, kDeviceDidDisconnectEvent, kPluginWillAppearEvent,
            kPluginWillDisappearEvent, kPluginPropertyInspectorWillAppearEvent,
            kPluginPropertyInspectorWillDisappearEvent, kSetLanguageEvent, kPluginWillRemoveEvent,
            kSetSLOBSParamEvent};
        QCOMPARE(events.join(u' ').replace("mek.zo.plugin.event."_L1, "*"_L1),
            u"*set.settings *get.settings *key.up *key.down *app.triggered *did.receive.settings "
            "*did.update.settings *update.settings *device.did.connect *device.did.disconnect "
            "*plugin.will.appear *plugin.will.disappear *plugin.property.inspector.will.appear "
            "*plugin.will.appear mek.set.language mek.will.remove mek.set.slobs.param"_s);
        QStringList const fields{kFieldTarget, kFieldEvent, kFieldType, kFieldSDK, kFieldApp, kFieldPayload,
            kJsonRpc, kMethod, kParams, kId, kResult, kError};
        QCOMPARE(fields.join(u' '),
            u"target event type SDKVersion AppVersion payload jsonrpc method params id result error"_s);
    }

    void packageReadsItsVersion()
    {
        std::tuple<char const*, int, QString> const rows[] = {
            {"{}", 0, u"x.x.x"_s},
            {R"({"library":{"versionCode":14,"versionName":"1.0.4"}})", 14, u"1.0.4"_s},
            {R"({"library":{"versionCode":12},"versionName":"9"})", 12, {}},
            {R"({"library":"x","versionName":1.2,"versionCode":"7"})", 0, u"1.2"_s},
            {R"({"library":null,"versionCode":5})", 5, u"x.x.x"_s},
        };
        BarePackage package;
        for (auto const& [config, code, name] : rows) {
            package.config = json(config);
            QVERIFY2(package.versionCode() == code, config);
            QVERIFY2(package.versionName() == name, config);
            QCOMPARE(package.list(), json(config));
        }
    }

    void packageKeepsHostParameters()
    {
        BarePackage package;
        auto const& proxy = ZoLumenProxy::getInstance();
        for (auto const& [params, port, folder] :
            {std::tuple(R"({"port":4711,"configDir":"/tmp/x","cloudType":2})", 4711, u"/tmp/x"_s),
                {R"({"port":"4711"})", 0, u""_s}}) {
            QVERIFY(package.init(json(params)));
            QCOMPARE(proxy.port, port);
            QCOMPARE(proxy.configDir, folder);
        }
    }

    // The resources of this test: ":/Good", and ":/Bad" with a configuration that is not an object.
    void packageLoadsItsResources()
    {
        LogRecorder log;
        BarePackage none;
        none.config = json(R"({"before":1})");
        QVERIFY(!none.loadConfig());
        QCOMPARE(none.list(), json(R"({"before":1})"));
        QVERIFY(log.take(
            u"critical: Failed to find json file from bundle.Resources \":/Bare/CategoryConfig.json\""_s));
        QCOMPARE(none.translate(u"en_US"_s), nullptr);
        QVERIFY(log.take(u"warning: [dll] load translation failed \"Bare\" \"en_US\""_s));

        BarePackage good(u"Good"_s);
        QVERIFY(good.loadConfig());
        QCOMPARE(good.versionCode(), 5);
        QCOMPARE(good.versionName(), u"a b"_s); // white space is collapsed before parsing

        BarePackage bad(u"Bad"_s);
        bad.config = json(R"({"before":1})");
        QVERIFY(bad.loadConfig());
        QCOMPARE(bad.list(), QJsonObject());
        QCOMPARE(log.problems(), QStringList());
    }
};

QTEST_GUILESS_MAIN(tst_Contract)
#include "tst_Contract.moc"
