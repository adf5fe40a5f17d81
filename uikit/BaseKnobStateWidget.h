#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QWidget>

#include <memory>

class QButtonGroup;

namespace Ui {
class BaseKnobStateWidget;
}

//! The preview of a knob in a settings panel: the knob in its colour, its title, the palette, and one page
//! button per state with the name of the state shown.
class BaseKnobStateWidget : public QWidget
{
    Q_OBJECT

public:
    explicit BaseKnobStateWidget(QWidget* parent = nullptr);
    ~BaseKnobStateWidget() override;

    //! Selects the colour in the palette, without a signal.
    Q_INVOKABLE void setCurrentColor(QColor const& color);
    //! Draws the knob with an arc of \a color; an invalid or transparent one gives no arc.
    Q_INVOKABLE void updateIconView(QColor const& color);

    //! Adds one page button per name with ids from 0, the first one rightmost and selected; no signal. None
    //! when they do not fit: more than six do not. Buttons that are there already stay.
    Q_INVOKABLE void generateButtonsByStateNames(QList<QString> const& names);
    //! Clicks the page button with \a id as the user would; an unknown id does nothing.
    Q_INVOKABLE void clickButton(int id);
    Q_INVOKABLE int totalButtonNum() const;
    Q_INVOKABLE void hideButtons();
    Q_INVOKABLE void showButtons();
    Q_INVOKABLE void showColorSelect();
    Q_INVOKABLE void hideColorSelect();
    Q_INVOKABLE void hideImageText();
    Q_INVOKABLE void setCurrentTitle(QString const& title);

signals:
    //! The user chose a colour.
    void colorSelected(QColor const& color);
    //! A page button was clicked.
    void iconIndexChanged(int index);

private:
    std::unique_ptr<Ui::BaseKnobStateWidget> ui;
    QButtonGroup* const pages;
    QColor drawn;
};
