#pragma once

#include <QPointer>
#include <QScrollArea>
#include <QString>

class Console;
class QLabel;

//! The settings panel of one key in its exact size, or a hint when there is none.
//!
//! It adopts the panels, and is the host to their requests: it remembers the folder of the last icon.
class KeyInspector : public QScrollArea
{
    Q_OBJECT

public:
    //! Of a panel, px.
    static constexpr QSize kPanelSize{832, 234};

    explicit KeyInspector(QWidget* parent = nullptr);

    void showKey(Console const& console, int index);
    //! The keyboard goes to the first control of the panel.
    void focusPanel();
    //! The keyboard goes to the title, which the panel's own tab order leaves out.
    void focusTitle();

    //! Where the user found the last icon; empty when never.
    QString const& iconFolder() const { return pictureFolder; }
    void setIconFolder(QString const& folder) { pictureFolder = folder; }

    QSize sizeHint() const override { return kPanelSize; }

signals:
    //! The user asked for the online icon builder.
    void iconBuilderAsked();

private slots:
    void onIconFolderChanging(QString& folder) const;
    void onIconFolderChanged(QString const& folder);

private:
    void adopt(QWidget* panel);

    QWidget* ground;
    QLabel* hint;
    QPointer<QWidget> shownPanel;
    QString pictureFolder;
};
