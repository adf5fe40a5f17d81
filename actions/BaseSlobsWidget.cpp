#include "actions/BaseSlobsWidget.h"

#include "actions/BaseSlobsDisplayView.h"
#include "actions/BaseSlobsPropertyView.h"
#include "actions/SlobsAgent.h"
#include "actions/SlobsPanelMessages.h"
#include "actions/SlobsSettings.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZoLumenProxy.h"
#include "relay/ZoRemoteCommands.h"

#include <QDebug>
#include <QMap>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;
using namespace MekZoPluginEventType;

namespace {

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
    void setLink(SlobsLink const& link);
    //! Shows what was changed of state \a index, and saves it.
    void applyState(int index, void (BaseSlobsDisplayView::*show)(QString const&), QString const& text);
    //! Runs what the user did in the panel. The host may delete the action over it.
    template <typename Reaction>
    void react(Reaction const& reaction);

    BaseSlobsWidget* q;
    QPointer<BaseSlobsDisplayView> displayView;
    QPointer<BaseSlobsPropertyView> propertyView;
    SlobsAgent agent;
    SlobsSettings::Document settings;
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
            setLink({}); // nobody is left to tell what is true
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
    SlobsLink link;
    SlobsAgent::fromAuthState(message, link.authorized, link.token, link.port);
    setLink(link);
}

void BaseSlobsWidget::Impl::setLink(SlobsLink const& link)
{
    q->onStreamlabsStateChanged(link.authorized, link.token, link.port);
    if (displayView) {
        displayView->onStreamlabsStateChanged(link.authorized, link.token, link.port);
    }
    if (propertyView) {
        propertyView->onStreamlabsStateChanged(link.authorized, link.token, link.port);
    }
}

void BaseSlobsWidget::Impl::applyState(
    int index, void (BaseSlobsDisplayView::*show)(QString const&), QString const& text)
{
    if (displayView) {
        displayView->setupWidgetStates(settings.titles, settings.icons);
        if (index == displayView->widgetState()) {
            (displayView->*show)(text);
        }
    }
    q->saveWidgetSettings();
}

// ---- The action

BaseSlobsWidget::BaseSlobsWidget(
    BaseSlobsDisplayView* displayView, BaseSlobsPropertyView* propertyView, QObject* parent)
    : ZOPlugin(parent), d(std::make_unique<Impl>(this, displayView, propertyView))
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
    return d->settings.titles.value(d->displayView ? d->displayView->widgetState() : 0);
}

QString BaseSlobsWidget::actionIconFilePath() const
{
    return d->settings.icons.value(d->displayView ? d->displayView->widgetState() : 0);
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
    d->settings = {};
    startWithDefault();
    QJsonObject defaults;
    prepareWidgetSettings(defaults);
    sendSettingsToViews(defaults);
    onSyncUI();
    return true;
}

bool BaseSlobsWidget::initWithPreset(QJsonObject const& preset)
{
    d->settings = {};
    startWithDefault();
    d->settings = SlobsSettings::read(preset, d->settings);
    startWithPreset(preset);
    onSyncUI();
    return true;
}

bool BaseSlobsWidget::initWithPayload(QJsonObject const& document)
{
    if (document.isEmpty()) {
        return initWithDefault();
    }
    d->settings = {};
    startWithDefault(); // for what the document leaves out
    bool const isLegacy = migrateLegacyPayload(document, SlobsSettings::versionOf(document));
    QJsonObject current = document;
    if (isLegacy) {
        qWarning() << "convert legacy data to new format";
        auto const renamed = SlobsSettings::convertLists(convertLegacyKeys(document));
        current = SlobsSettings::write(SlobsSettings::read(renamed, d->settings));
        prepareWidgetSettings(current);
    }
    d->settings = SlobsSettings::read(current, d->settings);
    QPointer<BaseSlobsWidget> const self(this); // the host may delete the action over its settings
    if (isLegacy) {
        onSetSettingsEvent(current);
    }
    if (!self) {
        return true;
    }
    startWithPayload(current);
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

QJsonObject BaseSlobsWidget::convertLegacyKeys(QJsonObject const& document) const
{
    return document;
}

void BaseSlobsWidget::setStates(QStringList const& titles, QStringList const& icons)
{
    d->settings.titles = titles;
    d->settings.icons = icons;
    if (d->propertyView) {
        d->propertyView->setDefaultIcons(icons);
    }
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
            d->settings.titles, d->settings.icons, static_cast<int>(d->settings.titles.size()) - 1);
        d->propertyView->setViewAttribute(d->settings.look);
        d->propertyView->adjustView(d->settings.look);
        d->propertyView->setActionModeState();
        // The panel asks for the link from the beginning, not only when the first answer has come.
        d->propertyView->onStreamlabsStateChanged(link.authorized, link.token, link.port);
    }
    if (d->displayView) {
        d->displayView->setupWidgetStates(d->settings.titles, d->settings.icons);
        d->displayView->setWidgetState(d->displayView->widgetState());
        d->displayView->adjustView(d->settings.look);
        d->displayView->refreshUiState();
    }
    return 0;
}

// ---- Edits in the panel

void BaseSlobsWidget::saveWidgetSettings()
{
    QJsonObject document = SlobsSettings::write(d->settings);
    prepareWidgetSettings(document);
    onSetSettingsEvent(document);
}

void BaseSlobsWidget::changeTitle(int index, QString const& text, bool apply)
{
    if (SlobsSettings::replaceAt(d->settings, &SlobsSettings::Document::titles, index, text) && apply) {
        d->applyState(index, &BaseSlobsDisplayView::setIconTitle, text);
    }
}

void BaseSlobsWidget::changeIcon(int index, QString const& path, bool apply)
{
    if (SlobsSettings::replaceAt(d->settings, &SlobsSettings::Document::icons, index, path) && apply) {
        d->applyState(index, &BaseSlobsDisplayView::setIconAsset, path);
    }
}

void BaseSlobsWidget::changeFontAttribute(ZoDisplayViewAttribute const& attribute)
{
    d->settings.look = attribute;
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
    link = {isAuthorized, newToken, newPort};
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
