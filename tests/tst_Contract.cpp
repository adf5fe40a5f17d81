// The contract with the host: the headers, the order of slots and fields, and what the base classes do.

#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoInterfaceRcc.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZOPlugin.h"
#include "tests/LogRecorder.h"
#include "tests/TestJson.h"

#include <QSignalSpy>
#include <QTest>

#include <cstring>

using namespace Qt::StringLiterals;

namespace {

class BarePlugin : public ZOPlugin
{
public:
    using ZOPlugin::eventReceived;
    using ZOPlugin::init;

    bool init(QString const&, QJsonObject const&) override { return true; }
    int eventReceived(QJsonObject const&, QJsonObject& reply) override
    {
        reply.insert("called"_L1, true);
        return 7;
    }
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

    void setConfig(QJsonObject const& object) { config = object; }
    static bool fieldsAreInOrder()
    {
        BarePackage const p;
        return offset(p, p.packageName) < offset(p, p.config) &&
               offset(p, p.config) < offset(p, p.translator);
    }

private:
    static std::ptrdiff_t offset(BarePackage const& object, auto const& field)
    {
        return reinterpret_cast<char const*>(&field) - reinterpret_cast<char const*>(&object);
    }
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

struct ObjectProbe : QObject
{
    static int lastSlot() { return slotOf(&ObjectProbe::disconnectNotify); }
};

} // namespace

class tst_Contract : public QObject
{
    Q_OBJECT

private slots:
    void slotsAndFieldsStandInOrder();
    void signalsStandInOrder();
    void bareActionHandlesNothing();
    void eventNames();
    void packageReadsItsVersion_data();
    void packageReadsItsVersion();
    void packageKeepsHostParameters();
    void barePackageDoesNothing();
    void packageLoadsItsResources();
};

void tst_Contract::slotsAndFieldsStandInOrder()
{
#if defined(_MSC_VER)
    QSKIP("this compiler keeps slot numbers elsewhere");
#else
    using P = ZOPlugin;
    int const actions[] = {
        slotOf(static_cast<bool (P::*)(QString const&, QJsonObject const&)>(&P::init)),
        slotOf(static_cast<int (P::*)(QJsonObject const&, QJsonObject&)>(&P::eventReceived)),
        slotOf(static_cast<int (P::*)(QJsonObject const&, QJsonObject&, int)>(&P::eventReceived)),
        slotOf(&P::pluginWidget),
        slotOf(&P::propertyWidget),
        slotOf(&P::actionTitle),
        slotOf(&P::actionIconFilePath),
        slotOf(&P::onKeyUpEvent),
        slotOf(&P::onKeyDownEvent),
        slotOf(&P::onAppTriggeredEvent),
        slotOf(&P::onSetSettingsEvent),
        slotOf(&P::onSyncUI),
        slotOf(static_cast<bool (P::*)(QString const&)>(&P::init)),
        slotOf(&P::initWithDefault),
        slotOf(&P::initWithPayload),
        slotOf(&P::initWithPreset),
    };
    using L = IBuiltInPackageLibrary;
    int const packages[] = {slotOf(&L::loadConfig), slotOf(&L::versionCode), slotOf(&L::versionName),
        slotOf(&L::translate), slotOf(&L::mapping), slotOf(&L::makeWidget), slotOf(&L::init),
        slotOf(&L::startService), slotOf(&L::stopService), slotOf(&L::list), slotOf(&L::onTask),
        slotOf(&L::postInit)};
    auto const follow = [](auto const& table, int before) {
        for (int const slot : table) {
            QCOMPARE(slot, ++before);
        }
    };
    follow(actions, ObjectProbe::lastSlot());
    follow(packages, ObjectProbe::lastSlot());
    using R = ZoInterfaceRcc;
    int const relay[] = {slotOf(&R::addCommandHandler), slotOf(&R::removeCommandHandler), slotOf(&R::publish),
        slotOf(&R::dispatchEvent)};
    follow(relay, -1);
#endif

    BarePlugin const plugin;
    QVERIFY(static_cast<void const*>(&plugin.context) < static_cast<void const*>(&plugin.actionId));
    QVERIFY(BarePackage::fieldsAreInOrder());
    auto const& proxy = ZoLumenProxy::getInstance();
    QVERIFY(static_cast<void const*>(&proxy.port) < static_cast<void const*>(&proxy.configDir));
}

void tst_Contract::signalsStandInOrder()
{
    auto const& meta = ZOPlugin::staticMetaObject;
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), "eventSent(QJsonObject)");
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), "eventPassThrough(QJsonObject)");
    QCOMPARE(meta.method(meta.methodOffset() + 2).methodSignature(), "ga(QString,QJsonObject)");
}

void tst_Contract::bareActionHandlesNothing()
{
    BarePlugin plugin;
    QVERIFY(!plugin.init(u"key 1"_s));
    QCOMPARE(plugin.context, u"key 1"_s);
    QVERIFY(!plugin.initWithDefault() && !plugin.initWithPayload({}) && !plugin.initWithPreset({}));
    QCOMPARE(plugin.onKeyUpEvent({}), -1);
    QCOMPARE(plugin.onKeyDownEvent({}), -1);
    QCOMPARE(plugin.onAppTriggeredEvent({}), -1);
    QCOMPARE(plugin.onSetSettingsEvent({}), -1);
    QCOMPARE(plugin.onSyncUI(), -1);
    QJsonObject reply;
    QCOMPARE(plugin.eventReceived({}, reply, 3), 7);
    QVERIFY(reply.contains("called"_L1));
}

void tst_Contract::eventNames()
{
    using namespace MekZoPluginEventType;
    QStringList const events{kSetSettingsEvent, kGetSettingsEvent, kKeyUpEvent, kKeyDownEvent,
        kAppTriggeredEvent, kDidReceiveSettingsEvent, kDidUpdateSettingsEvent, kUpdateSettingsEvent,
        kDeviceDidConnectEvent, kDeviceDidDisconnectEvent, kPluginWillAppearEvent, kPluginWillDisappearEvent,
        kPluginPropertyInspectorWillAppearEvent, kPluginPropertyInspectorWillDisappearEvent};
    QStringList endings;
    for (QString event : events) {
        QVERIFY(event.startsWith("mek.zo.plugin.event."_L1));
        endings.append(event.remove("mek.zo.plugin.event."_L1));
    }
    QCOMPARE(endings.join(u' '),
        u"set.settings get.settings key.up key.down app.triggered did.receive.settings did.update.settings "
        "update.settings device.did.connect device.did.disconnect plugin.will.appear plugin.will.disappear "
        "plugin.property.inspector.will.appear plugin.will.appear"_s);
    QCOMPARE(QStringList({kSetLanguageEvent, kPluginWillRemoveEvent, kSetSLOBSParamEvent}).join(u' '),
        u"mek.set.language mek.will.remove mek.set.slobs.param"_s);
    QCOMPARE(QStringList({kFieldTarget, kFieldEvent, kFieldType, kFieldSDK, kFieldApp, kFieldPayload,
                             kJsonRpc, kMethod, kParams, kId, kResult, kError})
                 .join(u' '),
        u"target event type SDKVersion AppVersion payload jsonrpc method params id result error"_s);
}

void tst_Contract::packageReadsItsVersion_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::newRow("nothing") << QByteArray("{}") << 0 << u"x.x.x"_s;
    QTest::newRow("library") << QByteArray(R"({"library":{"versionCode":14,"versionName":"1.0.4"}})") << 14
                             << u"1.0.4"_s;
    QTest::newRow("code only") << QByteArray(R"({"library":{"versionCode":12},"versionName":"9"})") << 12
                               << QString();
    QTest::newRow("top level code") << QByteArray(R"({"versionCode":3})") << 3 << u"x.x.x"_s;
    QTest::newRow("library is a string")
        << QByteArray(R"({"library":"x","versionName":"1.2"})") << 0 << u"1.2"_s;
    QTest::newRow("name is a number")
        << QByteArray(R"({"library":"x","versionName":1.2,"versionCode":"7"})") << 0 << u"1.2"_s;
    QTest::newRow("library is null") << QByteArray(R"({"library":null,"versionCode":5})") << 5 << u"x.x.x"_s;
}

void tst_Contract::packageReadsItsVersion()
{
    QFETCH(QByteArray, config);
    QFETCH(int, code);
    QFETCH(QString, name);
    BarePackage package;
    package.setConfig(json(config));
    QCOMPARE(package.versionCode(), code);
    QCOMPARE(package.versionName(), name);
    QCOMPARE(package.list(), json(config));
}

void tst_Contract::packageKeepsHostParameters()
{
    auto& proxy = ZoLumenProxy::getInstance();
    QCOMPARE(proxy.port, 0);
    QCOMPARE(proxy.configDir, QString());
    QCOMPARE(&ZoLumenProxy::getInstance(), &proxy);

    BarePackage package;
    QVERIFY(package.init(json(R"({"port":4711,"configDir":"/tmp/x","cloudType":2})")));
    QCOMPARE(proxy.port, 4711);
    QCOMPARE(proxy.configDir, u"/tmp/x"_s);
    QVERIFY(package.init(json(R"({"port":"4711"})")));
    QCOMPARE(proxy.port, 0);
    QCOMPARE(proxy.configDir, QString());
}

void tst_Contract::barePackageDoesNothing()
{
    BarePackage package;
    QJsonObject reply = json(R"({"kept":1})");
    package.startService(nullptr, {});
    package.onTask(json(R"({"task":"connect"})"), reply);
    package.stopService();
    QCOMPARE(reply, json(R"({"kept":1})"));
    QVERIFY(package.postInit());
}

// The resources of this test: ":/Good", and ":/Bad" with a configuration that is not an object.
void tst_Contract::packageLoadsItsResources()
{
    LogRecorder log;
    BarePackage none;
    none.setConfig(json(R"({"before":1})"));
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
    bad.setConfig(json(R"({"before":1})"));
    QVERIFY(bad.loadConfig());
    QCOMPARE(bad.list(), QJsonObject());
    QCOMPARE(log.problems(), QStringList());
}

QTEST_GUILESS_MAIN(tst_Contract)
#include "tst_Contract.moc"
