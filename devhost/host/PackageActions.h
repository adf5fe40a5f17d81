#pragma once

#include <QIcon>
#include <QList>
#include <QString>

class PluginHost;

//! An action that a package offers, as the host lists it. Nothing in it points into the library.
struct PackageAction
{
    QString id;
    //! In the language in use.
    QString label;
    QIcon icon;
};

namespace PackageActions {

//! Of the package that is loaded.
QList<PackageAction> read(PluginHost const& plugin);
//! Name and version for people, such as "Streamlabs 1.0.4".
QString packageLabel(PluginHost const& plugin);

} // namespace PackageActions
