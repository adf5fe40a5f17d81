#pragma once

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

//! Files for a test, in a folder that goes with it.
class TestFolder
{
public:
    QString path(QString const& name = {}) const { return folder.filePath(name); }
    //! Writes a file; its path, or nothing if that fails.
    QString file(QString const& name, QByteArray const& content) const
    {
        QFile out(path(name));
        return out.open(QIODevice::WriteOnly) && out.write(content) >= 0 ? out.fileName() : QString();
    }
    //! Writes a picture of one colour, in the format that its name tells or in \a format.
    QString picture(QString const& name, QSize size, QColor const& color, char const* format = nullptr) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        return image.save(path(name), format) ? path(name) : QString();
    }

private:
    QTemporaryDir folder;
};
