#pragma once

#include <QColor>
#include <QList>
#include <QString>
#include <QWidget>

#include <memory>

namespace Ui {
class BaseKnobPropertyWidget;
}

//! The frame of a knob action's settings panel: preview, palette and page buttons on the left, title on the
//! right.
//!
//! It keeps one icon path and one title per state and reports every edit of the user. All operations can be
//! invoked by name through the meta-object, as those of BasePropertyWidget.
class BaseKnobPropertyWidget : public QWidget
{
    Q_OBJECT

public:
    explicit BaseKnobPropertyWidget(QWidget* parent = nullptr);
    ~BaseKnobPropertyWidget() override;

    //! One path per state. With at most one the page buttons are hidden.
    Q_INVOKABLE void setKnobIconList(QList<QString> const& icons);
    //! One title per state.
    Q_INVOKABLE void setKnobTitleList(QList<QString> const& titles);
    //! On the knob; the list stays. A picture that cannot be shown changes nothing; the log says so.
    Q_INVOKABLE void setIcon(QString const& path);

    //! Selects the colour in the palette and draws the knob in it, without a signal. An invalid colour is
    //! logged and ignored.
    Q_INVOKABLE void setKnobColor(QColor const& color);
    //! Draws the knob in its colour, or without one.
    Q_INVOKABLE void showKnobColor();
    Q_INVOKABLE void showKnobColorTransparent();
    Q_INVOKABLE void showColorSelect();
    Q_INVOKABLE void hideColorSelect();

    //! See BaseKnobStateWidget.
    Q_INVOKABLE void generateButtonsByStateNames(QList<QString> const& names);
    Q_INVOKABLE void showButtons();
    Q_INVOKABLE void hideButtons();
    //! Clicks the page button of state \a id; an unknown id does nothing.
    Q_INVOKABLE void setCurrentId(int id);

    //! The path of the state shown; empty when the list has none.
    Q_INVOKABLE QString getCurrentIcon() const;

    //! Between the two, changes of the title reach nobody. A new title list or page connects again.
    Q_INVOKABLE void lineEditDisconnect();
    Q_INVOKABLE void lineEditConnect();

signals:
    void settingButtonClicked();
    //! Another page is shown.
    void stateIndexChanged(int index);
    //! The user chose a colour.
    void knobColorSelected(QColor const& color);
    //! The title of the state \a index was typed, or put into the line edit by code that had not
    //! disconnected.
    void knobTitleChanged(int index, QString const& title);

public slots:
    void onTextChanged(QString const& text);
    void onIconIndexChanged(int index);

protected:
    void changeEvent(QEvent* event) override;

private:
    void updateCurrentTitle();

    std::unique_ptr<Ui::BaseKnobPropertyWidget> ui;
    QList<QString> iconList;
    QList<QString> titleList;
    QColor knobColor;
    qint32 currentIndex = 0;
};
