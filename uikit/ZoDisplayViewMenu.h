#pragma once

#include <QMenu>
#include <QPointer>
#include <QPushButton>

//! A frameless pop-up menu that opens directly above its button, centred on it.
class ZoDisplayViewMenu : public QMenu
{
    Q_OBJECT

public:
    //! Without a \a parent the button owns the menu.
    explicit ZoDisplayViewMenu(QPushButton* button, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QPointer<QPushButton> const opener;
};
