#pragma once

#include <QDialog>

#include <memory>

class DevHost;
class QLabel;

namespace Ui {
class HostSettingsDialog;
}

//! The page of the host's settings where Streamlabs Desktop is linked. It keeps port and token as the user
//! entered them, and says how the link stands.
class HostSettingsDialog : public QDialog
{
    Q_OBJECT

public:
    explicit HostSettingsDialog(DevHost& host, QWidget* parent = nullptr);
    ~HostSettingsDialog() override;

    //! Shows how the link stands on \a label: in words, by a symbol, and in a colour.
    void showStatusOn(QLabel& label) const;

public slots:
    void connectDesktop();
    void reconnectDesktop();
    void disconnectDesktop();

signals:
    void statusChanged();

private:
    //! Whether the service has said that the link is up.
    void setLinked(bool linked);
    void showStatus();

    std::unique_ptr<Ui::HostSettingsDialog> ui;
    DevHost& devHost;
    bool hasLink = false;
    //! The user has taken the link down.
    bool off = false;
};
