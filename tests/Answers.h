#pragma once

#include <QApplication>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <functional>

using Answer = std::function<void(QWidget*)>;

inline QWidget* openPopup()
{
    return QApplication::activePopupWidget();
}

//! Answers the dialogs (or with `openPopup` the menus) that open one after the other, each as soon as it is
//! there.
inline void answerInTurn(QList<Answer> const& answers,
    QWidget* (*current)() = &QApplication::activeModalWidget, QPointer<QWidget> const& last = {})
{
    QTimer::singleShot(1, qApp, [=] {
        QWidget* const widget = current();
        if (!widget || widget == last) {
            answerInTurn(answers, current, last);
            return;
        }
        if (answers.size() > 1) {
            answerInTurn(answers.sliced(1), current, widget);
        }
        answers.first()(widget);
    });
}
