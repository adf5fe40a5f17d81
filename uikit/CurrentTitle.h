#pragma once

#include <QLineEdit>
#include <QList>
#include <QString>

//! Shows the title of state \a index, when there is one, in the editor and the preview of \a panel. The panel
//! reports no edit of it. The host may answer a typed letter with the whole list: a title that the editor
//! shows already is not set again, so that the cursor stays where the user types.
template <typename Panel, typename Preview>
void showCurrentTitle(
    Panel& panel, QLineEdit& editor, Preview& preview, QList<QString> const& titles, int index)
{
    panel.lineEditDisconnect();
    if (index >= 0 && index < titles.size()) {
        if (editor.text() != titles.at(index)) {
            editor.setText(titles.at(index));
        }
        preview.setCurrentTitle(titles.at(index));
    }
    panel.lineEditConnect();
}
