#pragma once

#include "actions/SlobsLink.h"

#include <QJsonObject>
#include <QList>
#include <QPixmap>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>

class ZoBaseHotkeyWidget;
class ZoDisplayViewAttribute;

namespace Ui {
class SlobsDisplayView;
}

//! What all five key faces have in common: 150 x 108 pixels with one title and one image per state, and the
//! invalid mark that stays on while Streamlabs Desktop is not linked.
//!
//! A face shows only what it has been told: its action's settings, the service's publications and the state
//! of the link. An action's own face says in `refreshUiState` what that means.
class BaseSlobsDisplayView : public QWidget
{
    Q_OBJECT

public:
    explicit BaseSlobsDisplayView(QWidget* parent = nullptr);
    ~BaseSlobsDisplayView() override;

    //! The face to draw on, not owned. Without one the operations below do nothing.
    void init(ZoBaseHotkeyWidget* hotkey);

    //! Replaces the titles and image paths, one per state.
    void setupWidgetStates(QList<QString> const& titles, QList<QString> const& icons);
    //! Stores \a state and shows its title and its image, as far as there are such.
    void setWidgetState(int state);
    int widgetState() const { return currentState; }

    void keyDown();
    void keyUp();
    //! The picture shown while the key is pressed.
    void setDownImage(QPixmap const& pixmap);
    //! The face without its title, to be shown smaller while the key is pressed. Null without a face.
    QPixmap grabWithoutTitle();
    void showInvalid();
    void hideInvalid();
    void adjustView(ZoDisplayViewAttribute const& attribute);
    void setIconTitle(QString const& title);
    void setIconAsset(QString const& path);

    //! Works out state and invalid mark anew.
    virtual void refreshUiState() = 0;

public slots:
    //! A message from the action: {"task": a result name, …} or {"task": "getWidgetSettings" or
    //! "setWidgetSettings", "payload": settings}.
    virtual void onWidgetMessageReceived(QJsonObject const& message) = 0;
    //! Stores the state of the link and refreshes.
    virtual void onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort);

protected:
    //! Shows \a state, if it is not shown yet, and the invalid mark unless \a valid.
    void showState(int state, bool valid);

    SlobsLink link;

private:
    std::unique_ptr<Ui::SlobsDisplayView> ui;
    QPointer<ZoBaseHotkeyWidget> face;
    QStringList titleList;
    QStringList iconList;
    int currentState = 0;
};
