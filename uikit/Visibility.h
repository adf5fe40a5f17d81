#pragma once

class QEvent;
class QString;
class QWidget;

//! For panels that are made with their keys and that nobody may ever open: nothing of them is styled before
//! they are shown or grabbed. Style sheets cost more time and memory than all else about such a panel.
class Visibility
{
public:
    //! Leaves the style of \a panel and of what is in it to its first show. Of itself Qt would see to it at
    //! the next turn of the event loop, shown or not. Does nothing once the panel is shown.
    static void styleWhenShown(QWidget* panel);

    //! To be called from the event handler of \a widget before all else: gives it the \a section of KitStyle
    //! when it is first shown or grabbed. In its form the sheet would have all that is in it styled while it
    //! is built.
    static void styleUpon(QEvent const* event, QWidget* widget, QString const& section);

    //! As QWidget::setVisible; but where setVisible(true) would have a \a child styled at once, while its
    //! parent is hidden, this leaves it to the show of the parent.
    static void set(QWidget* child, bool visible);
};
