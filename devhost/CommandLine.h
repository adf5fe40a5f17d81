#pragma once

#include "devhost/host/DevHost.h"
#include "devhost/script/EventReport.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <optional>

//! What the program is asked to do.
struct CommandLine
{
    //! Size of the stand-in's model.
    struct Size
    {
        int scenes = 0;
        int items = 0;
        int audio = 0;
    };

    DevHost::Options host;
    //! What `host.configDir` is where nothing is kept and the home cannot be written to.
    std::shared_ptr<QTemporaryDir> temporaryFolder;
    //! Whether there is a display to show the window on.
    bool headless = false;
    //! File of the script, or - for standard input; empty for none.
    QString script;
    //! The package library to be looked over, in the place of all else; empty for none.
    QString check;
    //! Where a picture of the window goes; empty for none.
    QString picture;
    //! To look as on a desktop of high contrast, "dark" or "light"; empty for the desktop that is there.
    QString contrast;
    //! Whether it was asked for, and a picture that cannot be written is a failure.
    bool needsPicture = false;
    EventReport::Format format = EventReport::Format::Text;
    bool verbose = false;
    //! Without one the stand-in has its demo collections.
    std::optional<Size> size;

    //! Reads \a arguments, the first of which is the program, or answers with what is wrong. Prints the help
    //! and exits when that is wanted.
    QString read(QStringList const& arguments);
};
