#include "actions/SlobsOutputPropertyView.h"

#include "ui_SlobsOutputPropertyView.h"

SlobsOutputPropertyView::SlobsOutputPropertyView(QWidget* parent)
    : BaseSlobsPropertyView(parent), ui(std::make_unique<Ui::SlobsOutputPropertyView>())
{
    ui->setupUi(this);
    init(ui->base);
    registerLoginPane(ui->btnGoAuth, ui->txtWarningMessage);
}

SlobsOutputPropertyView::~SlobsOutputPropertyView() = default;

void SlobsOutputPropertyView::retranslateUi()
{
    ui->retranslateUi(this);
}
