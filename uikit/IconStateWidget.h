#pragma once

#include <QList>
#include <QRect>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>

class AnimatedIcon;
class QButtonGroup;
class QPushButton;
class ZoDisplayViewAttribute;

namespace Ui {
class IconStateWidget;
}

//! The preview of a key face in a settings panel: icon, title, one page button per state, and the two buttons
//! that open the icon and the text editors.
//!
//! It shows what it is given and stores no state of the action. A picture that is missing leaves the preview
//! as it was, one that cannot be decoded leaves it empty; the log says so.
class IconStateWidget : public QWidget
{
    Q_OBJECT

public:
    explicit IconStateWidget(QWidget* parent = nullptr);
    ~IconStateWidget() override;

    //! Shows or hides the button that picks an image.
    Q_INVOKABLE void setIconChangeable(bool changeable);
    Q_INVOKABLE void hideButtons();
    Q_INVOKABLE void hideImageText();
    Q_INVOKABLE void showImageText();
    Q_INVOKABLE void hideTextEditButton();
    Q_INVOKABLE void showTextEditButton();
    //! Of the picture, in pixels of the preview. The icon shown is fitted again.
    Q_INVOKABLE void setIconGeometry(QRect const& geometry);
    Q_INVOKABLE void setCurrentTitle(QString const& title);

    //! Shows the picture at \a path: a GIF keeps its aspect ratio, a still picture is stretched.
    Q_INVOKABLE void updateCurrentIcon(QString const& path);

    //! The action's own picture for the state that is shown; empty: there is none to go back to.
    Q_INVOKABLE void setDefaultIcon(QString const& path);

    //! Clicks the page button with \a id as the user would; an unknown id does nothing.
    Q_INVOKABLE void clickButton(int id);
    //! One page button per name with ids from 0, the first one selected, no signal. None when they do not fit
    //! into the preview: more than six do not. With \a fromLeft false the first one is the rightmost.
    Q_INVOKABLE void generateButtonsByStateNames(QList<QString> const& names, bool fromLeft);
    Q_INVOKABLE void setButtonTooltip(int id, QString const& tooltip);
    Q_INVOKABLE int totalButtonNum() const;

    //! Restyles the title.
    Q_INVOKABLE void adjustView(ZoDisplayViewAttribute const& attribute);
    //! Hands the text-edit button to \a initialise, which gives it its menu.
    void initPushButtonMenu(std::function<void(QPushButton*)> const& initialise);

signals:
    //! The user chose a picture for the state \a index, or went back to the action's own.
    void iconPathChanged(int index, QString const& path);
    //! A page button was clicked.
    void iconIndexChanged(int index);
    //! A file dialog is about to open in \a folder; a directly connected receiver may write another one.
    void iconFolderChanging(QString& folder);
    void iconFolderChanged(QString const& folder);
    void buildIcon();

public slots:
    //! Runs the dialogs through which the user picks an image; returns when the last one is closed.
    void onSelectIconFile();

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    QString askForFile();
    void changeIcon(QString const& path);
    bool showPicture(QString const& path);

    std::unique_ptr<Ui::IconStateWidget> ui;
    AnimatedIcon* animation = nullptr;
    QButtonGroup* const pages;
    QString shownPath;
    QString defaultPath;
};
