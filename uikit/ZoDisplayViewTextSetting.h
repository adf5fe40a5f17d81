#pragma once

#include "uikit/ZoDisplayViewAttribute.h"

#include <QColor>
#include <QDialog>
#include <QList>
#include <QString>

#include <memory>

class QComboBox;

namespace Ui {
class ZoDisplayViewTextSetting;
}

//! The small panel in which the user edits the look of a key's title.
//!
//! It lives in a pop-up menu (ZoDisplayViewMenu) and never hides itself: it asks the menu's owner through
//! `aboutToClose` and `aboutToShow`. The whole panel works from the keyboard: Tab goes round, Space and Enter
//! press, Escape closes.
class ZoDisplayViewTextSetting : public QDialog
{
    Q_OBJECT

public:
    explicit ZoDisplayViewTextSetting(QWidget* parent = nullptr);
    ~ZoDisplayViewTextSetting() override;

    //! Shows \a attribute without a signal. A family or size that the lists do not have is kept in the
    //! attribute, while the list stays on the entry that it shows.
    Q_INVOKABLE void setViewAttribute(ZoDisplayViewAttribute const& attribute);
    Q_INVOKABLE ZoDisplayViewAttribute getViewAttribute() const;

    //! "LAB_TIP_TEXT_EDIT_COLOR : #rrggbb", the key translated.
    static QString getColorTooltip(QColor const& color);

    //! Takes the families out of \a families that do not show titles well: symbols and old bitmap fonts. The
    //! panel's own list is complete.
    static void filterNotSupportFont(QList<QString>& families);

    //! Only asks to be closed.
    void reject() override;

signals:
    //! At once after every edit of the user.
    void viewAttributeChanged(ZoDisplayViewAttribute const& attribute);
    void aboutToClose();
    //! The colour dialog, which closed the menu, has ended.
    void aboutToShow();

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void fillLists();
    void connectControls();
    void connectList(
        QComboBox* list, void (*store)(ZoDisplayViewAttribute& attribute, QVariant const& picked));
    void adjustUi();
    void showColor();
    void selectColor();

    std::unique_ptr<Ui::ZoDisplayViewTextSetting> ui;
    ZoDisplayViewAttribute current;
};
