#include "uikit/DialogIconEditMenu.h"

#include "ui_DialogIconEditMenu.h"
#include "uikit/KitStyle.h"

#include <QEvent>

using namespace Qt::StringLiterals;

namespace {

enum Choice { kNothing = -1, kLocalDisk = 0, kIconBuilder = 1, kReset = 2 };

} // namespace

DialogIconEditMenu::DialogIconEditMenu(QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint), ui(std::make_unique<Ui::DialogIconEditMenu>())
{
    ui->setupUi(this);
    setStyleSheet(KitStyle::sheet(u"DialogIconEditMenu"_s));
    for (QObject* watched : {static_cast<QObject*>(this), static_cast<QObject*>(ui->btnLocalDisk),
             static_cast<QObject*>(ui->btnIconBuilder)}) {
        watched->installEventFilter(this);
    }
    ui->btnReset->hide();
    ui->lblEdge->setAttribute(Qt::WA_TransparentForMouseEvents);
}

DialogIconEditMenu::~DialogIconEditMenu() = default;

void DialogIconEditMenu::offerReset()
{
    setFixedHeight(ui->btnReset->geometry().bottom() + 1);
    ui->btnReset->show();
    ui->lblEdge->resize(size());
}

bool DialogIconEditMenu::eventFilter(QObject* watched, QEvent* event)
{
    // From the dialog to one of its buttons is no way out: then a button is entered and the dialog not left.
    // A leave that comes late must not undo the choice.
    if (watched == this && event->type() == QEvent::Leave && isVisible()) {
        done(kNothing);
    }
    return QDialog::eventFilter(watched, event);
}

void DialogIconEditMenu::on_btnLocalDisk_clicked()
{
    done(kLocalDisk);
}

void DialogIconEditMenu::on_btnIconBuilder_clicked()
{
    done(kIconBuilder);
}

void DialogIconEditMenu::on_btnReset_clicked()
{
    done(kReset);
}

void DialogIconEditMenu::reject()
{
    done(kNothing);
}

void DialogIconEditMenu::showEvent(QShowEvent* event)
{
    // What a hidden dialog answers if nobody has chosen; the default would mean the local disk.
    setResult(kNothing);
    QDialog::showEvent(event);
}

void DialogIconEditMenu::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui->retranslateUi(this);
    }
    QDialog::changeEvent(event);
}
