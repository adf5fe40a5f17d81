#include "devhost/window/GenerateDialog.h"

#include "ui_GenerateDialog.h"

GenerateDialog::GenerateDialog(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::GenerateDialog>())
{
    ui->setupUi(this);
    ui->spinScenes->selectAll();
    connect(ui->buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

GenerateDialog::~GenerateDialog() = default;

int GenerateDialog::scenes() const
{
    return ui->spinScenes->value();
}

int GenerateDialog::items() const
{
    return ui->spinItems->value();
}

int GenerateDialog::audioSources() const
{
    return ui->spinAudio->value();
}
