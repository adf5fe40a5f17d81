#include "actions/BaseSlobsWidget.h"

#include "actions/BaseSlobsDisplayView.h"
#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsAgent.h"
#include "actions/SlobsPanelMessages.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZoRemoteCommands.h"
#include "uikit/ZoDisplayViewAttribute.h"

#include <QDebug>
#include <QJsonArray>
#include <QMap>
#include <QPointer>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace MekZoPluginEventType;

namespace {

QStringList toStringList(QJsonArray const& array)
{
    QStringList list;
    for (auto const& element : array) {
        list.append(element.toString());
    }
    return list;
}

//! A view that nobody has adopted goes with the action, or as soon as what is at work in it has returned.
template <typename View>
void deleteUnlessAdopted(QPointer<View> const& view, bool isAtWork)
{
    if (!view || view->parent()) {
        return;
    }
    if (isAtWork) {
        view->deleteLater();
    } else {
        delete view.data();
    }
}

} // namespace

// ---- The settings document

class BaseSlobsWidget::PayloadImpl
{
public:
    //! Titles and images, as far as \a document has them; what it says of fewer states than there are leaves
    //! the rest.
    void setWithPayload(QJsonObject const& document)
    {
        source = document;
        takeOver(titleList, document.value("titlelist"_L1));
        takeOver(iconList, document.value("iconlist"_L1));
    }

    void setDisplayAttribute(QJsonObject const& document)
    {
        attribute = ZoDisplayViewAttribute::fromJson(
            document.value(ZoDisplayViewAttribute::pluginPayloadKey).toObject());
    }

    //! Earlier versions kept {"title": [title, …], "states": [{"Image": path}, …]}.
    void convertLegacyLists(QJsonObject const& document)
    {
        takeOver(titleList, document.value("title"_L1));
        if (auto const states = document.value("states"_L1); states.isArray()) {
            QJsonArray images;
            for (auto const& state : states.toArray()) {
                images.append(state.toObject().value("Image"_L1).toString());
            }
            takeOver(iconList, images);
        }
        source.remove("title"_L1);
        source.remove("states"_L1);
    }

    //! Replaces the entry of a state in one of the two lists. False when there is no such state.
    bool replaceAt(QStringList& list, int index, QString const& text) const
    {
        qsizetype const states = std::max(titleList.size(), iconList.size());
        if (index < 0 || index >= states) {
            return false;
        }
        list.resize(states);
        list[index] = text;
        return true;
    }

    QJsonObject toJson() const
    {
        QJsonObject document = source;
        document.insert("version"_L1, version);
        document.insert("titlelist"_L1, QJsonArray::fromStringList(titleList));
        document.insert("iconlist"_L1, QJsonArray::fromStringList(iconList));
        QJsonObject look = source.value(ZoDisplayViewAttribute::pluginPayloadKey).toObject();
        QJsonObject const ours = ZoDisplayViewAttribute::toJson(attribute);
        for (auto member = ours.begin(); member != ours.end(); ++member) {
            look.insert(member.key(), member.value());
        }
        document.insert(ZoDisplayViewAttribute::pluginPayloadKey, look);
        return document;
    }

    //! What was loaded, for the keys that are not ours.
    QJsonObject source;
    qint32 version = kDocumentVersion;
    QStringList iconList;
    QStringList titleList;
    ZoDisplayViewAttribute attribute;

private:
    static void takeOver(QStringList& list, QJsonValue const& value)
    {
        QStringList const loaded = toStringList(value.toArray());
        list = loaded + list.mid(loaded.size());
    }
};

// ---- Views, agent and events

class BaseSlobsWidget::Impl
{
public:
    using EventHandler = std::function<void(QJsonObject const& event, QJsonObject& result)>;

    Impl(BaseSlobsWidget* widget, BaseSlobsDisplayView* display, BaseSlobsPropertyView* property)
        : q(widget), displayView(display), propertyView(property)
    {}

    void init();
    void initEventHandler();
    void initSlobsAgent(QString const& id, QString const& category);
    void onRegisterToRcc(QJsonObject const& wrapped);
    void onPropertyMessageReceived(QJsonObject const& message);
    void notifyAuthStateChanged(QJsonObject const& message);
    void setStreamlabsState(bool authorized, QString const& token, int port);
    //! Runs what the user did in the panel. The host may delete the action over it.
    template <typename Reaction>
    void react(Reaction const& reaction);

    BaseSlobsWidget* q;
    QPointer<BaseSlobsDisplayView> displayView;
    QPointer<BaseSlobsPropertyView> propertyView;
    SlobsAgent agent;
    QMap<QString, EventHandler> eventHandlers;
    //! A relay acknowledges by itself; one that has not by then waits to be asked.
    QTimer registration;
    bool registered = false;
    //! How many signals of the panel are on the stack.
    int panelSignals = 0;
};

template <typename Reaction>
void BaseSlobsWidget::Impl::react(Reaction const& reaction)
{
    QPointer<BaseSlobsWidget> const self(q);
    ++panelSignals;
    reaction();
    if (self) {
        --panelSignals;
    }
}

void BaseSlobsWidget::Impl::init()
{
    if (!displayView || !propertyView) {
        qCritical() << "BaseSlobsWidget::Impl::init";
        return;
    }
    connect(propertyView, &BaseSlobsPropertyView::titleChanged, q,
        [this](int index, QString const& text) { react([&] { q->changeTitle(index, text, true); }); });
    connect(propertyView, &BaseSlobsPropertyView::assetChanged, q,
        [this](int index, QString const& path) { react([&] { q->changeIcon(index, path, true); }); });
    connect(propertyView, &BaseSlobsPropertyView::viewAttributeChanged, q,
        [this](
            ZoDisplayViewAttribute const& attribute) { react([&] { q->changeFontAttribute(attribute); }); });
    connect(propertyView, &BaseSlobsPropertyView::sendToWidget, q,
        [this](QJsonObject const& message) { react([&] { onPropertyMessageReceived(message); }); });
    connect(q, &BaseSlobsWidget::sendToPropertyView, propertyView,
        &BaseSlobsPropertyView::onWidgetMessageReceived);
    connect(
        q, &BaseSlobsWidget::sendToDisplayView, displayView, &BaseSlobsDisplayView::onWidgetMessageReceived);
}

void BaseSlobsWidget::Impl::initEventHandler()
{
    eventHandlers = {
        {kKeyUpEvent, [this](QJsonObject const& event, QJsonObject&) { q->onKeyUpEvent(event); }},
        {kKeyDownEvent, [this](QJsonObject const& event, QJsonObject&) { q->onKeyDownEvent(event); }},
        {kAppTriggeredEvent,
            [this](QJsonObject const& event, QJsonObject&) { q->onAppTriggeredEvent(event); }},
        {kUpdateSettingsEvent, [this](QJsonObject const&, QJsonObject&) { q->saveWidgetSettings(); }},
    };
}

void BaseSlobsWidget::Impl::initSlobsAgent(QString const& id, QString const& category)
{
    using namespace ZoRemoteCommands;

    agent.addRccEventHandler(kRegisterToServer, [this, id, category](QJsonObject const& message) {
        onRegisterToRcc({{u"debug_id"_s, id}, {u"debug_category"_s, category}, {u"result"_s, message}});
    });
    auto const acknowledged = [](QJsonObject const&) {};
    agent.addRccEventHandler(kSubscribeSubject, acknowledged);
    agent.addRccEventHandler(kSubscribeSubjects, acknowledged);
    agent.addRccEventHandler(SlobsAgentPrivate::kQueryAuthStateResult,
        [this](QJsonObject const& message) { notifyAuthStateChanged(message); });

    constexpr auto kPatience = std::chrono::milliseconds(500);
    registration.setSingleShot(true);
    registration.setInterval(kPatience);
    registration.callOnTimeout(q, [this, id, category] { agent.registerToServer(id, category); });
    connect(&agent, &SlobsAgent::connected, q, [this] { registration.start(); });
    connect(&agent, &SlobsAgent::disconnected, q, [this] {
        registration.stop();
        // An attempt may fail while the constructor runs, before there is an action to tell.
        if (std::exchange(registered, false)) {
            setStreamlabsState(false, {}, 0); // nobody is left to tell what is true
        }
    });
    agent.connectRcc(u"ws://127.0.0.1:%1"_s.arg(ZoLumenProxy::getInstance().port));
}

void BaseSlobsWidget::Impl::onRegisterToRcc(QJsonObject const& wrapped)
{
    registration.stop();
    QJsonObject const result = wrapped.value("result"_L1).toObject();
    if (!result.contains("success"_L1)) {
        qWarning() << "Slobs::onMessage" << result;
        return;
    }
    if (registered) {
        return; // acknowledged by itself and on request
    }
    registered = true;
    agent.subscribe(ZoRemoteSubjects::kSubjectStreamlabsResponse, wrapped.value("debug_id"_L1).toString(),
        wrapped.value("debug_category"_L1).toString());
    q->onConnectToRcc();
}

void BaseSlobsWidget::Impl::onPropertyMessageReceived(QJsonObject const& message)
{
    QPointer<BaseSlobsWidget> const self(q);
    q->onPropertyMessageReceived(message);
    if (self && SlobsPanelMessages::isOpenLogin(message)) {
        agent.showSettingsLogin();
    }
}

void BaseSlobsWidget::Impl::notifyAuthStateChanged(QJsonObject const& message)
{
    bool authorized = false;
    QString token;
    int port = 0;
    SlobsAgent::fromAuthState(message, authorized, token, port);
    setStreamlabsState(authorized, token, port);
}

void BaseSlobsWidget::Impl::setStreamlabsState(bool authorized, QString const& token, int port)
{
    q->onStreamlabsStateChanged(authorized, token, port);
    if (displayView) {
        displayView->onStreamlabsStateChanged(authorized, token, port);
    }
    if (propertyView) {
        propertyView->onStreamlabsStateChanged(authorized, token, port);
    }
}

// ---- The action

BaseSlobsWidget::BaseSlobsWidget(
    BaseSlobsDisplayView* displayView, BaseSlobsPropertyView* propertyView, QObject* parent)
    : ZOPlugin(parent)
    , d(std::make_unique<Impl>(this, displayView, propertyView))
    , settings(std::make_unique<PayloadImpl>())
{
    d->init();
    d->initEventHandler();
    d->initSlobsAgent({}, {});
}

BaseSlobsWidget::~BaseSlobsWidget()
{
    d->agent.disconnect(this);
    d->agent.disconnectRcc();
    deleteUnlessAdopted(d->displayView, false);
    deleteUnlessAdopted(d->propertyView, d->panelSignals > 0);
}

SlobsAgent& BaseSlobsWidget::agent() const
{
    return d->agent;
}

QWidget* BaseSlobsWidget::pluginWidget()
{
    return d->displayView;
}

QWidget* BaseSlobsWidget::propertyWidget()
{
    return d->propertyView;
}

QString BaseSlobsWidget::actionTitle() const
{
    return settings->titleList.value(d->displayView ? d->displayView->widgetState() : 0);
}

QString BaseSlobsWidget::actionIconFilePath() const
{
    return settings->iconList.value(d->displayView ? d->displayView->widgetState() : 0);
}

// ---- Initialising

bool BaseSlobsWidget::init(QString const& keyContext)
{
    context = keyContext;
    return initWithDefault();
}

bool BaseSlobsWidget::init(QString const& keyContext, QJsonObject const& data)
{
    context = keyContext;
    if (data.contains("preset"_L1)) {
        return initWithPreset(data.value("preset"_L1).toObject());
    }
    if (data.contains(kFieldPayload)) {
        return initWithPayload(data.value(kFieldPayload).toObject());
    }
    return initWithDefault();
}

bool BaseSlobsWidget::initWithDefault()
{
    *settings = PayloadImpl();
    startWithDefault();
    QJsonObject defaults;
    prepareWidgetSettings(defaults);
    sendSettingsToViews(defaults);
    onSyncUI();
    return true;
}

bool BaseSlobsWidget::initWithPreset(QJsonObject const& preset)
{
    *settings = PayloadImpl();
    startWithDefault();
    settings->setWithPayload(preset);
    settings->setDisplayAttribute(preset);
    startWithPreset(preset);
    onSyncUI();
    return true;
}

bool BaseSlobsWidget::initWithPayload(QJsonObject const& document)
{
    if (document.isEmpty()) {
        return initWithDefault();
    }
    *settings = PayloadImpl();
    startWithDefault(); // for what the document leaves out
    settings->setWithPayload(document);
    settings->setDisplayAttribute(document);
    if (!migrateLegacyPayload(document, document.value("version"_L1).toInt())) {
        startWithPayload(document);
    } else {
        qWarning() << "convert legacy data to new format";
        settings->convertLegacyLists(document);
        QJsonObject converted = settings->toJson();
        prepareWidgetSettings(converted);
        settings->source = converted;
        QPointer<BaseSlobsWidget> const self(this); // the host may delete the action over its settings
        onSetSettingsEvent(converted);
        if (!self) {
            return true;
        }
        startWithPayload(converted);
    }
    onSyncUI();
    return true;
}

void BaseSlobsWidget::startWithPayload(QJsonObject const& document)
{
    sendSettingsToViews(document);
}

void BaseSlobsWidget::startWithPreset(QJsonObject const& preset)
{
    startWithPayload(preset);
}

void BaseSlobsWidget::prepareWidgetSettings([[maybe_unused]] QJsonObject& document) {}

bool BaseSlobsWidget::migrateLegacyPayload(
    [[maybe_unused]] QJsonObject const& document, [[maybe_unused]] int version)
{
    return false;
}

void BaseSlobsWidget::setStates(QStringList const& titles, QStringList const& icons)
{
    settings->titleList = titles;
    settings->iconList = icons;
}

QJsonObject& BaseSlobsWidget::loadedDocument()
{
    return settings->source;
}

// ---- Events of the host

int BaseSlobsWidget::eventReceived(QJsonObject const& message, QJsonObject& result)
{
    constexpr int kNoEvent = 403;
    constexpr int kUnknownEvent = 404;
    constexpr int kNotHandled = -1;

    if (!message.contains(kFieldEvent)) {
        result.insert(kError, kNoEvent);
        return kNotHandled;
    }
    QJsonObject const event = message.value(kFieldEvent).toObject();
    // A copy, for the host may delete the action over what the event leads to.
    Impl::EventHandler const handler = d->eventHandlers.value(event.value(kFieldType).toString());
    if (!handler) {
        result.insert(kError, kUnknownEvent);
        return kNotHandled;
    }
    handler(event, result);
    result.insert("success"_L1, true);
    return 0;
}

int BaseSlobsWidget::onKeyDownEvent([[maybe_unused]] QJsonObject const& event)
{
    if (d->displayView) {
        constexpr QSize kPressedSize(100, 72);
        // The size counts in the face's own pixels.
        QPixmap const picture = d->displayView->grabWithoutTitle();
        d->displayView->setDownImage(
            picture.scaled((QSizeF(kPressedSize) * picture.devicePixelRatio()).toSize(),
                Qt::IgnoreAspectRatio, Qt::FastTransformation));
        d->displayView->keyDown();
    }
    return 0;
}

int BaseSlobsWidget::onKeyUpEvent([[maybe_unused]] QJsonObject const& event)
{
    if (d->displayView) {
        d->displayView->keyUp();
    }
    return 0;
}

int BaseSlobsWidget::onSetSettingsEvent(QJsonObject const& document)
{
    emit eventSent({{kFieldEvent, QJsonObject{{kFieldType, kSetSettingsEvent}, {kFieldSDK, u"1.0.0"_s},
                                      {kFieldApp, u"1.1.0"_s}, {kFieldPayload, document}}},
        {kFieldTarget, context}});
    return 0;
}

int BaseSlobsWidget::onSyncUI()
{
    if (d->propertyView) {
        d->propertyView->setupWidgetStates(
            settings->titleList, settings->iconList, static_cast<int>(settings->titleList.size()) - 1);
        d->propertyView->setViewAttribute(settings->attribute);
        d->propertyView->adjustView(settings->attribute);
        d->propertyView->setActionModeState();
        // The panel asks for the link from the beginning, not only when the first answer has come.
        d->propertyView->onStreamlabsStateChanged(authorized, token, port);
    }
    if (d->displayView) {
        d->displayView->setupWidgetStates(settings->titleList, settings->iconList);
        d->displayView->setWidgetState(d->displayView->widgetState());
        d->displayView->adjustView(settings->attribute);
        d->displayView->refreshUiState();
    }
    return 0;
}

// ---- Edits in the panel

void BaseSlobsWidget::saveWidgetSettings()
{
    QJsonObject document = settings->toJson();
    prepareWidgetSettings(document);
    onSetSettingsEvent(document);
}

void BaseSlobsWidget::changeTitle(int index, QString const& text, bool apply)
{
    if (settings->replaceAt(settings->titleList, index, text) && apply) {
        if (d->displayView) {
            d->displayView->setupWidgetStates(settings->titleList, settings->iconList);
            if (index == d->displayView->widgetState()) {
                d->displayView->setIconTitle(text);
            }
        }
        saveWidgetSettings();
    }
}

void BaseSlobsWidget::changeIcon(int index, QString const& path, bool apply)
{
    if (settings->replaceAt(settings->iconList, index, path) && apply) {
        if (d->displayView) {
            d->displayView->setupWidgetStates(settings->titleList, settings->iconList);
            if (index == d->displayView->widgetState()) {
                d->displayView->setIconAsset(path);
            }
        }
        saveWidgetSettings();
    }
}

void BaseSlobsWidget::changeFontAttribute(ZoDisplayViewAttribute const& attribute)
{
    settings->attribute = attribute;
    if (d->displayView) {
        d->displayView->adjustView(attribute);
    }
    if (d->propertyView) {
        d->propertyView->adjustView(attribute);
    }
    saveWidgetSettings();
}

// ---- The link and the panel

void BaseSlobsWidget::onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort)
{
    authorized = isAuthorized;
    token = newToken;
    port = newPort;
}

void BaseSlobsWidget::onPropertyMessageReceived([[maybe_unused]] QJsonObject const& message) {}

void BaseSlobsWidget::onConnectToRcc()
{
    agent().queryAuthState();
}

void BaseSlobsWidget::sendToViews(QJsonObject const& message)
{
    emit sendToDisplayView(message);
    emit sendToPropertyView(message);
}

void BaseSlobsWidget::sendSettingsToViews(QJsonObject const& document)
{
    sendToViews(SlobsPanelMessages::toGetSettings(document));
}
