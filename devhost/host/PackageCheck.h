#pragma once

#include <QList>
#include <QString>

//! Looks a package library over as a console's host would use it, and says what is amiss.
namespace PackageCheck {

struct Finding
{
    bool good = false;
    //! What was looked at, such as "images".
    QString what;
    //! What was found, for people.
    QString text;
};

//! Loads \a file, with \a configDir for its data, reads what it offers in each of its languages, makes and
//! deletes every action, and unloads it. At the first finding without which there is no next it ends.
QList<Finding> run(QString const& file, QString const& configDir);

} // namespace PackageCheck
