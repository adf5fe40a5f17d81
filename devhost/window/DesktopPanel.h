#pragma once

#include "devhost/fakes/DesktopControls.h"
#include "devhost/window/EntryModel.h"

#include <QHash>
#include <QMap>
#include <QTimer>
#include <QWidget>

#include <memory>

class DevHost;
class QAction;
class QLabel;
class QListView;
class QToolButton;

namespace Ui {
class DesktopPanel;
}

//! The other application beside the console: what the stand-in for Streamlabs Desktop shows, and what its
//! user does in it, each of the `DesktopControls`. With a running Streamlabs Desktop only a line that says
//! so.
//!
//! Its `actions` are what a menu can offer.
class DesktopPanel : public QWidget
{
    Q_OBJECT

public:
    explicit DesktopPanel(QWidget* parent = nullptr);
    ~DesktopPanel() override;

    //! Shows the \a host's Streamlabs Desktop. The host must outlive the panel, or not be used any more.
    void watch(DevHost& host);

    //! Shows at once what has changed, not with the next frame of the screen.
    void refresh();
    //! Where the keyboard goes first.
    void focusFirst();

signals:
    //! Something could not be done, and why.
    void refused(QString const& why);

private:
    //! Entries under a heading, with buttons and a context menu of what can be done with them.
    struct List
    {
        QLabel* heading = nullptr;
        QListView* view = nullptr;
        EntryModel* model = nullptr;
    };

    StandInModel& desktop() const;
    void makeActions();
    void makeList(DesktopControl::Part part, EntryModel::Mark mark, QString const& name,
        QString const& heading, int stretch);
    void connectLists();

    //! What an action is for: takes the words from what is chosen here, or asks for them.
    void trigger(DesktopControl const& control);
    void run(QString const& control, QStringList const& words);
    QString wordFor(DesktopControl const& control, QString const& place);
    void askForNumbers(DesktopControl const& control);
    //! Shows what was added, ready to get its name.
    void editLast(QListView* view);

    //! One refresh for all that happens within a frame of the screen.
    void refreshSoon();
    void refreshOutput(QString const& control, QToolButton* button, QLabel* label, QString const& status);
    void refreshApplication();
    void refreshCollections();

    List const& list(DesktopControl::Part part) const;
    QString chosen(DesktopControl::Part part) const;
    QString shownScene() const;

    std::unique_ptr<Ui::DesktopPanel> ui;
    DevHost* devHost = nullptr;
    //! By the name of the control.
    QHash<QString, QAction*> controlActions;
    QMap<DesktopControl::Part, List> lists;
    QWidget* lastTabStop = nullptr;
    //! The scene whose items are listed.
    QPersistentModelIndex shownSceneIndex;
    QString activeScene;
    QTimer refreshing;
};
