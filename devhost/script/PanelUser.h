#pragma once

#include <QJsonObject>
#include <QString>

class QWidget;

//! What a person does in a settings panel, done by a script on the widget called by its object name. What is
//! hidden, disabled or read-only cannot be used. Each answers with what is wrong, or with nothing.
namespace PanelUser {

//! Chooses the entry \a text of a list.
QString choose(QWidget& panel, QString const& objectName, QString const& text);
QString click(QWidget& panel, QString const& objectName, QString const& text = {});
//! Replaces what stands in a field.
QString type(QWidget& panel, QString const& objectName, QString const& text);

//! What a person sees of a widget: {"exists", "visible", "enabled": bool, "text": string, "tooltip": string,
//! "entries": [text of each entry that can be chosen] (of a list)}.
QJsonObject look(QWidget const& panel, QString const& objectName);

} // namespace PanelUser
