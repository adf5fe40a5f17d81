#pragma once

#include "actions/SlobsLink.h"

#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QWidget>

#include <optional>

class BasePropertyWidget;
class ChoiceBox;
class QComboBox;
class QLabel;
class QPushButton;
class ZoDisplayViewAttribute;

//! What all five settings panels have in common: the frame with titles, icons and text look, the login pane
//! that asks the user to start and link Streamlabs Desktop, and the filling of lists in which the chosen
//! entry may be missing.
class BaseSlobsPropertyView : public QWidget
{
    Q_OBJECT

public:
    explicit BaseSlobsPropertyView(QWidget* parent = nullptr);

    //! The frame, not owned; its icon and text editors are opened and its edits forwarded.
    void init(BasePropertyWidget* widget);

    //! Titles and image paths per state; with at least two titles one page button each, of which \a current
    //! is chosen.
    void setupWidgetStates(QList<QString> const& titles, QList<QString> const& icons, int current);
    //! The action's own image paths per state, to which the user can go back.
    void setDefaultIcons(QList<QString> const& icons);
    //! Nothing in the frame can be changed, as inside of a multi-action. Every action starts like that; a
    //! host that has placed one on a key opens the frame's editors again.
    void setActionModeState();
    void setViewAttribute(ZoDisplayViewAttribute const& attribute);
    void adjustView(ZoDisplayViewAttribute const& attribute);
    //! The button and the label that ask for a login, hidden at first; in the panel or anywhere. Nothing
    //! unless both are given.
    void registerLoginPane(QPushButton* button, QLabel* label);
    //! The label that says that nothing is chosen yet and how to choose, in the place of the warning.
    void registerChoiceHint(QLabel* label);
    //! Appends an entry that is shown but cannot be chosen.
    static void addDisabledItemToLast(QComboBox* box, QString const& text, QVariant const& data);

public slots:
    //! A message from the action, as for the key face.
    virtual void onWidgetMessageReceived(QJsonObject const& message);
    //! Stores the state of the link and shows or hides the login pane.
    virtual void onStreamlabsStateChanged(bool isAuthorized, QString const& newToken, int newPort);
    void onLoginButtonClicked();

signals:
    void titleChanged(int index, QString const& title);
    void assetChanged(int index, QString const& path);
    void viewAttributeChanged(ZoDisplayViewAttribute const& attribute);
    //! {"event": "openSettingsAuth"}, or {"task": …, "payload": …} as the action's panel defines it.
    void sendToWidget(QJsonObject const& message);

protected:
    //! One entry of a list: what is stored and what is read.
    struct Choice
    {
        QString id;
        QString name;

        bool operator==(Choice const&) const = default;
    };

    //! The records that have an id, which is in their member \a id.
    template <typename Record>
    static QList<Choice> toChoices(QList<Record> const& records, QString Record::* id)
    {
        QList<Choice> choices;
        choices.reserve(records.size());
        for (auto const& record : records) {
            if (!(record.*id).isEmpty()) {
                choices.append({record.*id, record.name});
            }
        }
        return choices;
    }
    //! The name of the choice \a id, or \a fallback.
    static QString nameOf(QList<Choice> const& choices, QString const& id, QString const& fallback);

    //! What a list says of what is configured: it is there (or there is nothing to choose from), nothing is
    //! configured, or it is not in the list. Of two lists the greater counts.
    enum class Selection { Fine, Nothing, Missing };

    //! Fills \a box with \a choices and selects \a configured. Where that is missing it is appended as an
    //! entry that cannot be chosen; where nothing is configured the first entry shows. A box that holds all
    //! that already is left alone.
    Selection fillChoices(ChoiceBox* box, QList<Choice> choices, Choice const& configured);

    //! The sentence below the lists about what is configured, while the link is there.
    void showSelection(Selection newSelection);

    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    //! Sets the panel's texts in the language in use.
    virtual void retranslateUi() = 0;

    SlobsLink link;

private:
    //! What a box was filled with; the first \a enabled of its entries can be chosen.
    struct Filled
    {
        QList<Choice> choices;
        qsizetype enabled = 0;
    };

    void showPane();

    QHash<QComboBox*, Filled> filled;
    QPointer<BasePropertyWidget> frame;
    QPointer<QPushButton> loginButton;
    QPointer<QLabel> loginLabel;
    QPointer<QLabel> choiceHint;
    Selection selection = Selection::Fine;
    QStringList stateNames;
};
