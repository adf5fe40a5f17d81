#pragma once

#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <memory>

class IBuiltInPackageLibrary;
class ZOPlugin;

//! One key of the console with the action placed on it, as the host keeps it.
//!
//! The host owns the action object and adopts its two widgets: whoever shows them gives them a parent. It
//! delivers the host's events, keeps the settings document that the action sends, and opens the panel's
//! editors, since the action sits on the key directly and not inside a multi-action.
class ConsoleKey : public QObject
{
    Q_OBJECT

public:
    //! Of a face, px.
    static constexpr QSize kFaceSize{150, 108};

    //! What the key shows.
    struct Face
    {
        QString title;
        bool invalid = false;
        //! Path of the image of the state that is shown.
        QString icon;

        bool operator==(Face const&) const = default;
    };

    //! Makes and initialises the action. An empty \a settings document is none. Null when the package has no
    //! such action.
    static std::unique_ptr<ConsoleKey> create(
        IBuiltInPackageLibrary& package, QString const& actionId, int index, QJsonObject const& settings);
    //! Deletes the action, and with it its widgets.
    ~ConsoleKey() override;

    int index() const { return position; }
    QString const& actionId() const { return currentActionId; }
    //! The document that the action has sent last.
    QJsonObject const& settings() const { return document; }
    //! Null when somebody has deleted them.
    QWidget* faceWidget() const { return faceView; }
    QWidget* panelWidget() const { return panelView; }
    Face face() const;

    //! Initialises the action anew from \a settings.
    void setSettings(QJsonObject const& settings);

    void keyDown();
    //! Triggers the action and releases the key.
    void keyUp();
    //! Neither down nor up: the action does what it is for.
    void trigger();
    //! Down, triggered and up.
    void press();
    //! Down and up without triggering, as when the finger slides off the key.
    void release();

    //! Compares the face with what was reported last.
    void checkFace();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void faceChanged();
    void settingsChanged();

private slots:
    void onEventSent(QJsonObject const& event);

private:
    ConsoleKey(ZOPlugin* action, QString actionId, int index);
    void initialise(QJsonObject const& settings);
    void send(QString const& type);
    void openEditors();

    std::unique_ptr<ZOPlugin> placedAction;
    QString currentActionId;
    int position;
    QJsonObject document;
    QPointer<QWidget> faceView;
    QPointer<QWidget> panelView;
    Face reported;
    QTimer check;
};
