#pragma once

#include <QWidget>

//! The LED of a function key of the console, "STREAM" or "RECORD", with its name beside it.
class KeyLed : public QWidget
{
    Q_OBJECT

public:
    explicit KeyLed(QWidget* parent = nullptr);

    void setFunction(QString const& name);
    QString const& function() const { return current; }
    void setLit(bool lit);
    bool isLit() const { return shining; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString current;
    bool shining = false;
};
