#include "devhost/window/HostSettingsDialog.h"

#include "devhost/host/DevHost.h"
#include "devhost/window/DarkTheme.h"
#include "streamlabs/SlobsMessages.h"
#include "ui_HostSettingsDialog.h"

using namespace Qt::StringLiterals;

HostSettingsDialog::HostSettingsDialog(DevHost& host, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::HostSettingsDialog>()), devHost(host)
{
    ui->setupUi(this);
    ui->spinPort->setValue(host.desktop().port);
    ui->edtToken->setText(host.desktop().token);
    connect(ui->btnConnect, &QPushButton::clicked, this, &HostSettingsDialog::connectDesktop);
    connect(ui->btnReconnect, &QPushButton::clicked, this, &HostSettingsDialog::reconnectDesktop);
    connect(ui->btnDisconnect, &QPushButton::clicked, this, &HostSettingsDialog::disconnectDesktop);
    connect(ui->btnClose, &QPushButton::clicked, this, &QDialog::reject);
    connect(&host, &DevHost::publicationReceived, this, [this](QJsonObject const& payload) {
        if (payload.value("task"_L1) == QJsonValue(SlobsAgentPrivate::kQueryAuthStateResult)) {
            setLinked(payload.value("authorized"_L1).toBool());
        }
    });
    showStatus();
}

HostSettingsDialog::~HostSettingsDialog() = default;

void HostSettingsDialog::connectDesktop()
{
    off = false;
    devHost.plugin().connectDesktop(ui->edtToken->text(), ui->spinPort->value());
    showStatus();
}

void HostSettingsDialog::reconnectDesktop()
{
    off = false;
    devHost.plugin().reconnectDesktop(ui->edtToken->text(), ui->spinPort->value());
    showStatus();
}

void HostSettingsDialog::disconnectDesktop()
{
    off = true;
    devHost.plugin().disconnectDesktop();
    showStatus();
}

void HostSettingsDialog::setLinked(bool linked)
{
    hasLink = linked;
    showStatus();
}

// Whether it does not run or does not let us in is not published: both are the end of the link.
void HostSettingsDialog::showStatusOn(QLabel& label) const
{
    QPalette palette = label.palette();
    palette.setColor(QPalette::WindowText, DarkTheme::text(hasLink ? DarkTheme::kGood
                                                           : off   ? DarkTheme::kFaintText
                                                                   : DarkTheme::kAccent));
    label.setPalette(palette);
    label.setText(hasLink ? tr("● Linked to Streamlabs Desktop")
                  : off   ? tr("○ Disconnected")
                          : tr("▲ Not linked: not running, or wrong port or token"));
}

void HostSettingsDialog::showStatus()
{
    showStatusOn(*ui->lblStatus);
    emit statusChanged();
}
