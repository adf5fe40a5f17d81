#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class DialogIconEditMenu;
}

//! The small pop-up that asks where an icon comes from.
//!
//! `exec` answers 0 for a file on this computer, 1 for the online icon builder, and 2 for the action's own
//! icon, which is offered on request only. Every other way out (the
//! pointer leaves the pop-up, Escape, closing or hiding it) answers -1: nothing was chosen.
class DialogIconEditMenu : public QDialog
{
    Q_OBJECT

public:
    explicit DialogIconEditMenu(QWidget* parent = nullptr);
    ~DialogIconEditMenu() override;

    //! Offers the action's own icon as well; before the pop-up shows.
    void offerReset();

    bool eventFilter(QObject* watched, QEvent* event) override;

public slots:
    void on_btnLocalDisk_clicked();
    void on_btnIconBuilder_clicked();
    void on_btnReset_clicked();
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    std::unique_ptr<Ui::DialogIconEditMenu> ui;
};
