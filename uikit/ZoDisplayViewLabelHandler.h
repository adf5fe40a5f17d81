#pragma once

class QLabel;
class ZoDisplayViewAttribute;

//! Gives a title label the look of an attribute and puts it above a bottom line.
//!
//! `bottom` is in pixels of the label's parent. The label keeps its x and width, gets the height of one line
//! of text, and its text sits at the bottom of it whatever the attribute's alignment. A null label is
//! ignored.
class ZoDisplayViewLabelHandler
{
public:
    //! On a key face: twice the attribute's size, since the preview is drawn at half the face's scale.
    static void modifyIconWidgetLabel(QLabel* label, int bottom, ZoDisplayViewAttribute const& attribute);
    //! In a settings panel's preview.
    static void modifyPropertyWidgetLabel(QLabel* label, int bottom, ZoDisplayViewAttribute const& attribute);

    //! Sets a text that is wider than its label in narrower letters of the same height, down to two thirds of
    //! their width. What is wider still is the label's to end (see TitleLabel). Both of the above do it as
    //! well.
    static void fitText(QLabel* label);
};
