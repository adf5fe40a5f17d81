#pragma once

#include <QHash>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

class Console;
class KeyView;
class QGridLayout;
class QSettings;

namespace Ui {
class ConsoleView;
}

//! The console as it lies on the desk: a page of its keys with live faces, and the LEDs.
//!
//! One key is always the current one, free or not. Its number is page * keys per page + position.
class ConsoleView : public QWidget
{
    Q_OBJECT

public:
    explicit ConsoleView(QWidget* parent = nullptr);
    ~ConsoleView() override;

    //! Shows \a console, whose keys may come and go, and which may go as well. \a labels: action id to name.
    void watch(Console& console, QHash<QString, QString> const& labels);

    int current() const { return currentPage * keysPerPage() + currentPosition; }
    //! Turns to the page of key \a index.
    void setCurrent(int index);
    //! The focus goes to the current key.
    void focusCurrent();
    //! Puts an action on the next free key, from the current one on. False when there is none.
    bool place(QString const& actionId);
    //! Live: a click presses a key, and does nothing else; otherwise it chooses one and presses nothing.
    void setLive(bool live);
    bool isLive() const;
    void pressCurrent();
    void removeCurrent();
    void turnPage(int by);
    void setLed(QString const& function, bool lit);

    void store(QSettings& settings) const;
    //! What is stored wrongly or not at all stays as it is.
    void restore(QSettings const& settings);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

signals:
    //! Another key is the current one, or the current one is on another action.
    void currentChanged(int index);
    //! There is another size or page.
    void arranged();
    void liveChanged(bool live);

private:
    int keysPerPage() const { return columnCount * rowCount; }
    int pageCount() const;
    void setSize(int columns, int rows);
    void setPage(int page);
    void arrange();
    void magnify();
    void showKey(int index);
    KeyView* viewOf(int index) const;
    KeyView* makeView();
    //! The key on this page in the direction of the arrow \a key, or the current one.
    int neighbour(int key) const;
    void showMenu(QPoint const& at);

    std::unique_ptr<Ui::ConsoleView> ui;
    QPointer<Console> watched;
    QHash<QString, QString> actionLabels;
    QGridLayout* grid;
    //! Grows and never shrinks: a view takes the faces that it has adopted with it.
    std::vector<KeyView*> views;
    double magnification = 1;
    int columnCount = 5;
    int rowCount = 3;
    int currentPage = 0;
    int currentPosition = 0;
};
