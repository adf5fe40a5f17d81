#include "uikit/pictures/GifFile.h"

#include <bit>

namespace {

constexpr quint8 kExtension = 0x21;
constexpr quint8 kImage = 0x2C;
constexpr quint8 kGraphicControl = 0xF9;
constexpr quint8 kApplication = 0xFF;
constexpr quint8 kHasColors = 0x80;
constexpr quint8 kInterlaced = 0x40;

//! Takes bytes off the front of a file; once it has run dry it stays dry and yields zeros.
class Cursor
{
public:
    explicit Cursor(QByteArrayView bytes) : rest(bytes) {}

    bool isDry() const { return dry; }
    bool atEnd() const { return rest.isEmpty(); }

    QByteArrayView take(qsizetype count)
    {
        if (rest.size() < count) {
            dry = true;
            rest = {};
            return {};
        }
        auto const taken = rest.first(count);
        rest = rest.sliced(count);
        return taken;
    }
    quint8 byte()
    {
        auto const taken = take(1);
        return taken.isEmpty() ? quint8{0} : static_cast<quint8>(taken.front());
    }
    quint16 word()
    {
        int const low = byte();
        return static_cast<quint16>(low | (byte() << 8));
    }
    QByteArrayView colors(quint8 flags)
    {
        return (flags & kHasColors) != 0 ? take(qsizetype{3} * (2 << (flags & 7))) : QByteArrayView{};
    }
    //! The first block of a chain; the whole chain is taken.
    QByteArrayView blocks()
    {
        auto const first = take(byte());
        if (!first.isEmpty()) {
            while (!take(byte()).isEmpty()) {
            }
        }
        return first;
    }
    //! What was taken since \a earlier, a copy of this cursor, was made.
    QByteArrayView since(Cursor const& earlier) const
    {
        return earlier.rest.first(earlier.rest.size() - rest.size());
    }

private:
    QByteArrayView rest;
    bool dry = false;
};

void appendWord(QByteArray& bytes, int word)
{
    bytes.append(static_cast<char>(word & 0xFF)).append(static_cast<char>((word >> 8) & 0xFF));
}

} // namespace

std::optional<GifFile> GifFile::read(QByteArrayView bytes)
{
    Cursor in(bytes);
    auto const signature = in.take(6);
    if (signature != "GIF89a" && signature != "GIF87a") {
        return std::nullopt;
    }

    GifFile file;
    file.canvas.setWidth(in.word());
    file.canvas.setHeight(in.word());
    quint8 const flags = in.byte();
    in.take(2); // the background colour, which players ignore, and the pixel shape
    auto const sharedColors = in.colors(flags);

    Frame next;
    for (bool ended = false; !ended && !in.atEnd() && file.frames.size() <= kMostFrames;) {
        quint8 const kind = in.byte();
        if (kind == kExtension) {
            quint8 const label = in.byte();
            auto chain = in;
            auto const first = in.blocks();
            if (label == kGraphicControl && first.size() >= 4) {
                Cursor control(first);
                quint8 const how = control.byte();
                next.disposal = Disposal{static_cast<quint8>(qMin((how >> 2) & 7, 3))};
                next.delay = control.word();
                quint8 const transparent = control.byte();
                next.transparent = (how & 1) != 0 ? std::optional(transparent) : std::nullopt;
            } else if (label == kApplication && (first == "NETSCAPE2.0" || first == "ANIMEXTS1.0")) {
                chain.take(1 + first.size());
                Cursor loop(chain.take(chain.byte()));
                if (loop.byte() == 1) {
                    file.loops = loop.word();
                }
            }
        } else if (kind == kImage) {
            int const x = in.word();
            int const y = in.word();
            int const width = in.word();
            next.area = QRect(x, y, width, in.word());
            quint8 const how = in.byte();
            next.interlaced = (how & kInterlaced) != 0;
            auto const ownColors = in.colors(how);
            next.colors = ownColors.isEmpty() ? sharedColors : ownColors;
            auto const start = in;
            in.byte();
            in.blocks();
            if (!in.isDry()) {
                next.data = in.since(start);
            }
            file.frames.append(next);
            next = {};
        } else {
            ended = kind == static_cast<quint8>(kEnd);
        }
    }
    if (in.isDry()) {
        return std::nullopt;
    }
    return file;
}

QByteArray GifFile::head(QSize canvas, std::optional<quint16> loops)
{
    QByteArray bytes("GIF89a");
    appendWord(bytes, canvas.width());
    appendWord(bytes, canvas.height());
    bytes.append(3, '\0');
    if (loops) {
        bytes.append("\x21\xFF\x0BNETSCAPE2.0\x03\x01");
        appendWord(bytes, *loops);
        bytes.append('\0');
    }
    return bytes;
}

QByteArray GifFile::frame(Frame const& frame)
{
    QByteArray bytes;
    bytes.reserve(18 + frame.colors.size() + frame.data.size());

    int const how = (static_cast<int>(frame.disposal) << 2) | (frame.transparent ? 1 : 0);
    bytes.append("\x21\xF9\x04").append(static_cast<char>(how));
    appendWord(bytes, frame.delay);
    bytes.append(static_cast<char>(frame.transparent.value_or(0))).append('\0');

    bytes.append(static_cast<char>(kImage));
    for (int const word : {frame.area.x(), frame.area.y(), frame.area.width(), frame.area.height()}) {
        appendWord(bytes, word);
    }
    int flags = frame.interlaced ? kInterlaced : 0;
    if (!frame.colors.isEmpty()) {
        flags |= kHasColors | (std::countr_zero(static_cast<quint64>(frame.colors.size() / 3)) - 1);
    }
    bytes.append(static_cast<char>(flags));
    return bytes.append(frame.colors).append(frame.data);
}
