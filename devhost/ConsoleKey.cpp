#include "devhost/ConsoleKey.h"

#include "devhost/DevHostLog.h"
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
    : m_action(action)
    , m_actionId(std::move(actionId))
    , m_index(index)
    , m_faceWidget(action->pluginWidget())
    , m_panelWidget(action->propertyWidget())
{
    // By signature: the library exports no meta-object of its classes.
    connect(action, SIGNAL(eventSent(QJsonObject)), this, SLOT(onEventSent(QJsonObject)));
    m_check.setSingleShot(true);
    m_check.setInterval(0);
    m_check.callOnTimeout(this, &ConsoleKey::checkFace);
    if (m_faceWidget) {
        for (auto* label : m_faceWidget->findChildren<QLabel*>()) {
            label->installEventFilter(this);
        }
    }
}

ConsoleKey::~ConsoleKey()
{
    delete m_faceWidget;
    delete m_panelWidget;
}

void ConsoleKey::initialise(QJsonObject const& settings)
{
    QString const context = u"key-%1"_s.arg(m_index);
    m_action->init(context, settings.isEmpty() ? QJsonObject() : QJsonObject{{kFieldPayload, settings}});
    send(kUpdateSettingsEvent); // the action answers with its whole document
    openEditors();
    m_reported = face();
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
    QObject* const frame = m_panelWidget ? m_panelWidget->findChild<QObject*>(u"base"_s) : nullptr;
    if (!frame) {
        return;
    }
    QStringList titles;
    for (auto const& title : m_settings.value("titlelist"_L1).toArray()) {
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
        qCWarning(devHostLog) << "the panel of" << m_actionId << "has editors that cannot be opened";
    }
}

void ConsoleKey::onEventSent(QJsonObject const& event)
{
    QJsonObject const body = event.value(kFieldEvent).toObject();
    if (body.value(kFieldType) != QJsonValue(kSetSettingsEvent)) {
        qCInfo(devHostLog) << "event of" << m_actionId << event;
        return;
    }
    QJsonObject const settings = body.value(kFieldPayload).toObject();
    if (settings != m_settings) {
        m_settings = settings;
        emit settingsChanged();
        m_check.start();
    }
}

void ConsoleKey::send(QString const& type)
{
    QJsonObject reply;
    m_action->eventReceived(
        {{kFieldEvent, QJsonObject{{kFieldType, type}}}, {kFieldTarget, m_action->context}}, reply);
    if (!reply.value("success"_L1).toBool()) {
        qCWarning(devHostLog) << m_actionId << "did not handle" << type << reply;
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
    if (m_faceWidget) {
        if (auto const* title = m_faceWidget->findChild<QLabel*>(u"lblTitle"_s)) {
            face.title = title->text();
        }
        if (auto const* mask = m_faceWidget->findChild<QLabel*>(u"lblMaskInvalid"_s)) {
            face.invalid = !mask->isHidden();
        }
    }
    face.icon = m_action->actionIconFilePath();
    return face;
}

void ConsoleKey::checkFace()
{
    if (Face const now = face(); now != m_reported) {
        m_reported = now;
        emit faceChanged();
    }
}

bool ConsoleKey::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Paint:
    case QEvent::ShowToParent:
    case QEvent::HideToParent:
        m_check.start();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}
