#pragma once

#include <QString>
#include <QWidget>

//! What a settings panel asks of whoever hosts it.
class PropertyLostDelegates : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

signals:
    //! A file dialog is about to open in \a folder; a directly connected receiver may write another one.
    void iconFolderChanging(QString& folder);
    //! The absolute folder of the file that was just chosen.
    void iconFolderChanged(QString const& folder);
    //! The user wants the online icon builder instead of a file.
    void buildIcon();
};
