#pragma once

#include <QColor>
#include <QWidget>

#include <array>
#include <memory>

namespace Ui {
class SelectColorWidget;
}

//! A palette of ten fixed colours, one of which is always selected; the first one at start.
class SelectColorWidget : public QWidget
{
    Q_OBJECT

public:
    explicit SelectColorWidget(QWidget* parent = nullptr);
    ~SelectColorWidget() override;

    //! Selects the button of \a color without a signal. A colour that is not in the palette changes nothing.
    Q_INVOKABLE void selectTargetColor(QColor const& color);

signals:
    //! The user chose a colour, the selected one included.
    void colorSelected(QColor const& color);

private:
    //! Index = id of the colour's button.
    static std::array<QColor, 10> const colorTable;

    std::unique_ptr<Ui::SelectColorWidget> ui;
};
