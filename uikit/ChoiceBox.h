#pragma once

#include <QComboBox>

//! A list to choose from whose names come from outside, so that they may be long and may be the same.
//!
//! A chosen name that is too wide ends with "…". Entries of one name can be told apart by their places among
//! their like ("Camera · 2/3"). Drawn only: the entries' texts stay the names.
class ChoiceBox : public QComboBox
{
    Q_OBJECT

public:
    using QComboBox::QComboBox;

    //! To be called when the list has been filled.
    void tellApart();

    //! What is drawn for the entry \a index.
    QString shownText(int index) const;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};
