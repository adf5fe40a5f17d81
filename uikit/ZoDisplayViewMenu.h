#pragma once

#include <QMenu>
#include <QPointer>
#include <QPushButton>

//! A frameless pop-up menu that opens directly above its button, centred on it. Once it has closed the button
//! looks pointed at only when it is.
class ZoDisplayViewMenu : public QMenu
{
    Q_OBJECT

public:
    //! Without a \a parent the button owns the menu.
    explicit ZoDisplayViewMenu(QPushButton* button, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QPointer<QPushButton> const opener;
};
