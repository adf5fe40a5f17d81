#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

//! What every target defines: takes one input, which is any bytes at all, and returns 0. A fault ends the
//! process.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

//! What the targets share.
namespace Fuzz {

//! Ends the process with a line that says \a what does not hold.
inline void require(bool holds, char const* what)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

inline QByteArrayView bytes(std::uint8_t const* data, std::size_t size)
{
    return {data, static_cast<qsizetype>(size)};
}

inline void dropUnlessFatal(QtMsgType type, QMessageLogContext const&, QString const& text)
{
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
    }
}

//! Bad input is logged, line after line, which nobody reads here.
inline QtMessageHandler const handlerBefore = qInstallMessageHandler(dropUnlessFatal);

} // namespace Fuzz
