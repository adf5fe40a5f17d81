#pragma once

#include "uikit/BaseIconProperty.h"
#include "uikit/PropertyLostDelegates.h"
#include "uikit/ZoDisplayViewAttribute.h"

#include <QList>
#include <QPointer>
#include <QString>

#include <memory>

class QPushButton;
class ZoDisplayViewMenu;
class ZoDisplayViewTextSetting;

namespace Ui {
class BasePropertyWidget;
}

//! The frame of every action's settings panel: preview with page buttons on the left, title on the right.
//!
//! It keeps one icon path and one title per state and reports every edit of the user with the state's index.
//! What the host sets is not reported. All operations can be invoked by name through the meta-object, so that
//! a host can open and close the editors of a panel that it only knows as a QWidget.
class BasePropertyWidget : public PropertyLostDelegates
{
    Q_OBJECT

public:
    explicit BasePropertyWidget(QWidget* parent = nullptr);
    ~BasePropertyWidget() override;

    //! One title per state.
    Q_INVOKABLE void setPluginTitleList(QList<QString> const& titles);
    //! One path per state. With at most one the page buttons are hidden.
    Q_INVOKABLE void setPluginIconList(QList<QString> const& icons);
    //! The action's own path per state, to which the user can go back.
    Q_INVOKABLE void setDefaultIconList(QList<QString> const& icons);
    //! Clicks the page button of state \a id; an unknown id does nothing.
    Q_INVOKABLE void setCurrentId(int id);
    Q_INVOKABLE void setIconChangeable(bool changeable);
    //! \a resize gives a fixed icon more room. Unknown types do nothing.
    Q_INVOKABLE void setIconType(BaseIconProperty::Type type, bool resize);
    //! Shows or hides the button that opens the text look panel. Hidden at start.
    Q_INVOKABLE void setTextEditable(bool editable);
    //! The title in the line edit.
    Q_INVOKABLE QString iconTitle() const;
    //! See IconStateWidget.
    Q_INVOKABLE void generateButtonsByStateNames(QList<QString> const& names, bool fromLeft);
    Q_INVOKABLE void setButtonTooltip(int id, QString const& tooltip);
    Q_INVOKABLE void hideButtons();
    Q_INVOKABLE void showImageText();
    //! A read-only title does not take the focus either.
    Q_INVOKABLE void setTitleIsReadOnly(bool readOnly);
    //! For a key whose action is no longer there: nothing can be edited.
    Q_INVOKABLE void setPluginMissingMode();
    //! What the text look panel starts from. An empty family becomes the family of this widget's font. Does
    //! not restyle the preview: `adjustTextLabel` does.
    Q_INVOKABLE void setViewAttribute(ZoDisplayViewAttribute const& attribute);
    //! Restyles the title in the preview.
    Q_INVOKABLE void adjustTextLabel(ZoDisplayViewAttribute const& attribute);
    //! Between the two, typing in the title reaches nobody. A new title or page connects again.
    Q_INVOKABLE void lineEditDisconnect();
    Q_INVOKABLE void lineEditConnect();

signals:
    //! The user typed a title for the state \a index.
    void pluginTitleChanged(int index, QString const& title);
    //! The user chose a picture for the state \a index.
    void pluginIconChanged(int index, QString const& path);
    //! The user changed the text look.
    void viewAttributeChanged(ZoDisplayViewAttribute const& attribute);

public slots:
    void onTextChanged(QString const& text);
    //! A negative index counts as 0; an index that no state has is logged and ignored.
    void onIconPathChanged(int index, QString const& path);
    void onIconIndexChanged(int index);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool makeRoom(QList<QString>& list, int index) const;
    void updateCurrentTitle();
    void initDisplayViewSetting(QPushButton* button);

    std::unique_ptr<Ui::BasePropertyWidget> ui;
    QList<QString> iconList;
    QList<QString> defaultIconList;
    QList<QString> titleList;
    qint32 currentIndex = 0;
    ZoDisplayViewAttribute viewAttribute;
    QPointer<ZoDisplayViewMenu> menu;
    QPointer<ZoDisplayViewTextSetting> textSetting;
    bool initialised = false;
};
