#include "devhost/host/ConsoleKey.h"

#include "devhost/fakes/DevHostLog.h"
#include "plugin/IBuiltInPackageLibrary.h"
#include "relay/MekZoPluginEventType.h"
#include "relay/ZOPlugin.h"

#include <QEvent>
#include <QJsonArray>
#include <QLabel>

#include <utility>

using namespace Qt::StringLiterals;
using namespace MekZoPluginEventType;

std::unique_ptr<ConsoleKey> ConsoleKey::create(
    IBuiltInPackageLibrary& package, QString const& actionId, int index, QJsonObject const& settings)
{
    ZOPlugin* const action = package.makeWidget(actionId, index);
    if (!action) {
        return nullptr;
    }
    std::unique_ptr<ConsoleKey> key(new ConsoleKey(action, actionId, index));
    key->initialise(settings);
    return key;
}

ConsoleKey::ConsoleKey(ZOPlugin* action, QString actionId, int index)
    : placedAction(action)
    , currentActionId(std::move(actionId))
    , position(index)
    , faceView(action->pluginWidget())
    , panelView(action->propertyWidget())
{
    // By signature: the library exports no meta-object of its classes.
    connect(action, SIGNAL(eventSent(QJsonObject)), this, SLOT(onEventSent(QJsonObject)));
    check.setSingleShot(true);
    check.setInterval(0);
    check.callOnTimeout(this, &ConsoleKey::checkFace);
    if (faceView) {
        for (auto* label : faceView->findChildren<QLabel*>()) {
            label->installEventFilter(this);
        }
    }
}

ConsoleKey::~ConsoleKey()
{
    delete faceView;
    delete panelView;
}

void ConsoleKey::initialise(QJsonObject const& settings)
{
    QString const context = u"key-%1"_s.arg(position);
    placedAction->init(context, settings.isEmpty() ? QJsonObject() : QJsonObject{{kFieldPayload, settings}});
    send(kUpdateSettingsEvent); // the action answers with its whole document
    openEditors();
    reported = face();
    emit faceChanged();
}

void ConsoleKey::setSettings(QJsonObject const& settings)
{
    initialise(settings);
}

// The panel comes in the mode in which nothing can be edited. Its frame is a widget named "base" whose
// operations can be invoked by name.
void ConsoleKey::openEditors()
{
    QObject* const frame = panelView ? panelView->findChild<QObject*>(u"base"_s) : nullptr;
    if (!frame) {
        return;
    }
    QStringList titles;
    for (auto const& title : document.value("titlelist"_L1).toArray()) {
        titles.append(title.toString());
    }
    bool const open =
        QMetaObject::invokeMethod(frame, "setTitleIsReadOnly", Q_ARG(bool, false)) &&
        QMetaObject::invokeMethod(frame, "setIconChangeable", Q_ARG(bool, true)) &&
        QMetaObject::invokeMethod(frame, "setTextEditable", Q_ARG(bool, true)) &&
        QMetaObject::invokeMethod(
            frame, "generateButtonsByStateNames", Q_ARG(QStringList, titles), Q_ARG(bool, true)) &&
        QMetaObject::invokeMethod(frame, "setCurrentId", Q_ARG(int, static_cast<int>(titles.size()) - 1));
    if (!open) {
        qCWarning(devHostLog) << "the panel of" << currentActionId << "has editors that cannot be opened";
    }
}

void ConsoleKey::onEventSent(QJsonObject const& event)
{
    QJsonObject const body = event.value(kFieldEvent).toObject();
    if (body.value(kFieldType) != QJsonValue(kSetSettingsEvent)) {
        qCInfo(devHostLog) << "event of" << currentActionId << event;
        return;
    }
    QJsonObject const settings = body.value(kFieldPayload).toObject();
    if (settings != document) {
        document = settings;
        emit settingsChanged();
        check.start();
    }
}

void ConsoleKey::send(QString const& type)
{
    QJsonObject reply;
    placedAction->eventReceived(
        {{kFieldEvent, QJsonObject{{kFieldType, type}}}, {kFieldTarget, placedAction->context}}, reply);
    if (!reply.value("success"_L1).toBool()) {
        qCWarning(devHostLog) << currentActionId << "did not handle" << type << reply;
    }
}

void ConsoleKey::keyDown()
{
    send(kKeyDownEvent);
}

void ConsoleKey::keyUp()
{
    trigger();
    release();
}

void ConsoleKey::trigger()
{
    send(kAppTriggeredEvent);
}

void ConsoleKey::press()
{
    keyDown();
    keyUp();
}

void ConsoleKey::release()
{
    send(kKeyUpEvent);
}

// ---- The face

ConsoleKey::Face ConsoleKey::face() const
{
    Face face;
    if (faceView) {
        if (auto const* title = faceView->findChild<QLabel*>(u"lblTitle"_s)) {
            face.title = title->text();
        }
        if (auto const* mask = faceView->findChild<QLabel*>(u"lblMaskInvalid"_s)) {
            face.invalid = !mask->isHidden();
        }
    }
    face.icon = placedAction->actionIconFilePath();
    return face;
}

void ConsoleKey::checkFace()
{
    if (Face const now = face(); now != reported) {
        reported = now;
        emit faceChanged();
    }
}

bool ConsoleKey::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Paint:
    case QEvent::ShowToParent:
    case QEvent::HideToParent:
        check.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
